// A compressed chunk of a disk image: the last byte of its kind, three bytes for the size of its contents, and then
// the chunk as it is stored.

#include "Target.h"
#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/ChunkInflater.h"

#include <string>
#include <zlib.h>

namespace join::fuzz {

using namespace platform::hdiutil;

void tryOut(std::string_view input) {
    static ChunkInflater inflater; // what one chunk leaves must not matter to the next
    if (input.size() < 4)
        return;
    const auto kind = static_cast<ChunkKind>(0x80000000U | bigEndian(input, 0, 1));
    const std::size_t size = bigEndian(input, 1, 3);
    input.remove_prefix(4);
    std::string_view contents;
    try {
        contents = inflater.inflate(kind, input, size);
        require(contents.size() == size);
    } catch (const platform::Exception&) {
    }
    if (kind != ChunkKind::zlib)
        return;
    // What zlib can inflate, libdeflate can; it is less strict about what makes no difference.
    std::string expected(size, '\0');
    uLongf filled = size;
    const bool isExpected =
        ::uncompress(reinterpret_cast<Bytef*>(expected.data()), &filled,
                     reinterpret_cast<const Bytef*>(input.data()), input.size()) == Z_OK &&
        filled == size;
    require(!isExpected || contents == expected);
}

} // namespace join::fuzz
