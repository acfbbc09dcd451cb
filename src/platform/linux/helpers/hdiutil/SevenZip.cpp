#include "platform/linux/helpers/hdiutil/SevenZip.h"

#include "platform/Exception.h"
#include "platform/linux/files/Descriptor.h"

#include <array>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace join::platform::hdiutil {

namespace {

constexpr std::size_t maximumListing = std::size_t{64} << 20;

/// Returns whether it is a program, and not a script that starts one.
bool isProgram(const std::string& path) {
    const Descriptor file = openForReading(AT_FDCWD, path.c_str());
    std::array<char, 4> start{};
    return file && readSome(file.get(), start.data(), start.size()) == ssize_t{start.size()} &&
           std::string_view(start.data(), start.size()) == "\x7F\x45LF";
}

} // namespace

std::string pathOf7zz(const std::vector<std::string>& places) {
    for (const std::string& place : places)
        if (::access(place.c_str(), X_OK) == 0 && isProgram(place))
            return place;
    throw Exception("7-Zip is not installed");
}

SevenZip::SevenZip(std::string program, int image, ImageKind kind, const Interruption& interruption)
    : program_(std::move(program)), image_(image), kind_(kind), interruption_(interruption) {}

std::unique_ptr<ChildProcess> SevenZip::start(std::vector<std::string> arguments,
                                              ChildProcess::Output output) const {
    // Naming the kind stops 7zz from treating the image as anything else, and from looking into an image of
    // Apple's format for its contents.
    const std::string type = std::string("-t") + typeName(kind_);
    arguments.insert(arguments.end(), {type, "-bd", "-sccUTF-8", "--", ChildProgram::fileArgument});
    Confinement confinement;
    confinement.allowProgram(program_);
    confinement.allow(image_, Confinement::Access::read);
    return std::make_unique<ChildProcess>(ChildProgram{program_, std::move(arguments), image_, &confinement},
                                          output, interruption_);
}

std::string SevenZip::list() const {
    const auto child = start({"l", "-slt", "-sns-"});
    std::string text;
    std::vector<char> buffer(1 << 16);
    while (const std::size_t count = child->read(buffer.data(), buffer.size())) {
        if (count > maximumListing - text.size())
            throw Exception("the volume holds too many files");
        text.append(buffer.data(), count);
    }
    if (child->finish() != 0)
        throw Exception("7zz cannot read the image");
    return text;
}

void SevenZip::open(const std::function<void(const ByteSource&)>& take) const {
    const auto child = start({"x", "-so", "-sns-"});
    take([&](char* buffer, std::size_t size) { return child->read(buffer, size); });
    if (child->finish() != 0)
        throw Exception("the image is damaged: 7zz cannot open all of it");
}

std::unique_ptr<ChildProcess> SevenZip::check() const { return start({"t"}, ChildProcess::Output::ignored); }

} // namespace join::platform::hdiutil
