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

/// The kind is named, so that nothing else is made of an image than what it was taken for, and that 7zz does
/// not look into an image of Apple's format for what may be there.
const char* optionFor(ImageKind kind) {
    switch (kind) {
    case ImageKind::hfsPlus:
        return "-thfs";
    case ImageKind::apfs:
        return "-tapfs";
    case ImageKind::iso:
        return "-tiso";
    default:
        return "-tdmg";
    }
}

/// Not a script that starts one.
bool isProgram(const std::string& path) {
    const Descriptor file = openForReading(AT_FDCWD, path.c_str());
    std::array<char, 4> start{};
    return file && readSome(file.get(), start.data(), start.size()) == ssize_t{start.size()} &&
           std::string_view(start.data(), start.size()) == "\x7F\x45LF";
}

} // namespace

std::string pathOf7zz(const std::vector<std::string>& places) {
    const std::string* wrapper = nullptr;
    for (const std::string& place : places) {
        if (::access(place.c_str(), X_OK) != 0)
            continue;
        if (isProgram(place))
            return place;
        if (wrapper == nullptr)
            wrapper = &place;
    }
    if (wrapper == nullptr)
        throw Exception("7-Zip is not installed");
    return *wrapper;
}

SevenZip::SevenZip(std::string program, int image, ImageKind kind, const Interruption& interruption)
    : program_(std::move(program)), image_(image), kind_(kind), interruption_(interruption) {}

std::unique_ptr<ChildProcess> SevenZip::list() const {
    return std::make_unique<ChildProcess>(describe({"l", "-slt", "-sns-"}), ChildProcess::Output::read,
                                          interruption_);
}

std::unique_ptr<ChildProcess> SevenZip::open() const {
    return std::make_unique<ChildProcess>(describe({"x", "-so", "-sns-"}), ChildProcess::Output::read,
                                          interruption_);
}

std::unique_ptr<ChildProcess> SevenZip::check() const {
    return std::make_unique<ChildProcess>(describe({"t"}), ChildProcess::Output::ignored, interruption_);
}

ChildProgram SevenZip::describe(std::initializer_list<const char*> command) const {
    ChildProgram program{program_, {command.begin(), command.end()}, image_};
    for (const char* argument : {optionFor(kind_), "-bd", "-sccUTF-8", "--", ChildProgram::fileArgument})
        program.arguments.emplace_back(argument);
    return program;
}

std::string textOf(ChildProcess& listing) {
    std::string text;
    std::vector<char> buffer(1 << 16);
    while (const std::size_t count = listing.read(buffer.data(), buffer.size())) {
        if (count > maximumListing - text.size())
            throw Exception("the volume holds too many files");
        text.append(buffer.data(), count);
    }
    if (listing.finish() != 0)
        throw Exception("7zz cannot read the image");
    return text;
}

} // namespace join::platform::hdiutil
