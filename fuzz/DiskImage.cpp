// A disk image. Images are large and mostly empty, so an input leaves the gaps out:
//
//   input = size *( place length bytes )      ; size and place have eight bytes, length has two, big-endian
//
// A place beyond the size counts from the end; the last byte has the place of all ones.

#include "Target.h"
#include "platform/Exception.h"
#include "platform/linux/helpers/hdiutil/ImageKind.h"
#include "platform/linux/helpers/hdiutil/IsoTrees.h"
#include "platform/linux/helpers/hdiutil/UdifTrailer.h"

#include <algorithm>
#include <vector>

namespace join::fuzz {

namespace {

using namespace platform::hdiutil;

std::uint64_t takeNumber(std::string_view& input, std::size_t size) {
    const std::uint64_t number = bigEndian(input, 0, size);
    input.remove_prefix(std::min(size, input.size()));
    return number;
}

class SparseImage : public RandomAccess {
public:
    explicit SparseImage(std::string_view input) : size_(takeNumber(input, 8)) {
        while (!input.empty()) {
            const std::uint64_t place = takeNumber(input, 8);
            const std::uint64_t length = takeNumber(input, 2);
            const std::string_view bytes = input.substr(0, length);
            pieces_.push_back({place < size_ ? place : size_ + place, bytes});
            input.remove_prefix(bytes.size());
        }
    }

    std::uint64_t size() const override { return size_; }

    std::string read(std::uint64_t offset, std::size_t size) const override {
        require(size <= 65536);
        std::string bytes(offset < size_ ? std::min<std::uint64_t>(size, size_ - offset) : 0, '\0');
        for (const auto& [place, piece] : pieces_)
            for (std::size_t i = 0; i < piece.size(); ++i)
                if (const std::uint64_t at = place + i - offset; at < bytes.size())
                    bytes[at] = piece[i];
        return bytes;
    }

private:
    struct Piece {
        std::uint64_t place;
        std::string_view bytes;
    };
    std::uint64_t size_;
    std::vector<Piece> pieces_;
};

} // namespace

void tryOut(std::string_view input) {
    const SparseImage image(input);
    const IsoTree tree = richerTree(image);
    if (tree.poorer)
        require(*tree.poorer < image.size() && image.read(*tree.poorer, 6) == "\2CD001");
    require(tree.volumeName.size() <= 48);
    try {
        const ImageFacts facts = tellKind(image);
        require(facts.place.size <= image.size() && facts.place.offset <= image.size() - facts.place.size);
        if (facts.kind == ImageKind::hfsPlus) {
            require(image.read(facts.place.offset + 1024, 1) == "H");
        } else if (facts.kind == ImageKind::udif) {
            const std::uint64_t end = image.size() - UdifTrailer::size;
            const Extent data = readUdifTrailer(image).data;
            require(data.offset <= end && data.size <= end - data.offset);
        }
    } catch (const platform::Exception& refusal) {
        require(*refusal.what() != '\0');
    }
}

} // namespace join::fuzz
