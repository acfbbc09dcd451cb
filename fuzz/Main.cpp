#include "Target.h"

#include <cstddef>
#include <cstdint>

/// What libFuzzer calls, with as many bytes on the heap as it says.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    join::fuzz::tryOut({reinterpret_cast<const char*>(data), size});
    return 0;
}
