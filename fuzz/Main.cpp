#include "Target.h"

#include <cstddef>
#include <cstdint>

/// libFuzzer calls this, with exactly that many bytes on the heap.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    join::fuzz::tryOut({reinterpret_cast<const char*>(data), size});
    return 0;
}
