#include "standins/ServiceImages.h"

#include <charconv>
#include <exception>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using join::tools::imageKinds;
using join::tools::ServiceImages;
using Text = std::string;
using Setter = void (*)(ServiceImages&, const Text& value);

int megabytes(const Text& text) {
    constexpr int most = 10'000;
    int value = -1;
    const char* const end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || parsed != end || value < 0 || value > most)
        throw std::invalid_argument("--payload: a number from 0 to " + std::to_string(most) + " is needed");
    return value;
}

join::tools::ImageKind kind(const Text& name) {
    const auto found = imageKinds().find(name);
    if (found == imageKinds().end())
        throw std::invalid_argument("--kind: no such kind");
    return found->second;
}

const std::map<std::string_view, Setter>& setters() {
    static const std::map<std::string_view, Setter> table{
        {"--join-app", [](ServiceImages& i, const Text& value) { i.joinApp = value; }},
        {"--kind", [](ServiceImages& i, const Text& value) { i.kind = kind(value); }},
        {"--agent-version", [](ServiceImages& i, const Text& value) { i.agentVersion = value; }},
        {"--crash-detector-version",
         [](ServiceImages& i, const Text& value) { i.crashDetectorVersion = value; }},
        {"--payload", [](ServiceImages& i, const Text& value) { i.payload = megabytes(value); }},
    };
    return table;
}

ServiceImages parse(const std::vector<Text>& arguments) {
    if (arguments.size() % 2 == 0 || arguments[0].empty() || arguments[0][0] == '-')
        throw std::invalid_argument("a folder and then options, each with a value, are needed");
    ServiceImages images{.folder = arguments[0]};
    for (std::size_t i = 1; i < arguments.size(); i += 2) {
        const auto setter = setters().find(arguments[i]);
        if (setter == setters().end())
            throw std::invalid_argument("unknown option " + arguments[i]);
        setter->second(images, arguments[i + 1]);
    }
    if (images.joinApp.empty())
        throw std::invalid_argument("--join-app is needed");
    return images;
}

} // namespace

int main(int argc, char** argv) {
    try {
        join::tools::makeServiceImages(parse({argv + 1, argv + argc}));
        return 0;
    } catch (const std::invalid_argument& wrong) {
        std::cerr << "make-service-images: " << wrong.what()
                  << "\nusage: make-service-images DIR --join-app BUNDLE [--agent-version V]\n"
                     "       [--crash-detector-version V] [--payload MEGABYTES]\n"
                     "       [--kind udif-zlib|udif-bzip2|udif-plain|hfsplus|iso]\n";
        return 2;
    } catch (const std::exception& exception) {
        std::cerr << "make-service-images: " << exception.what() << '\n';
        return 1;
    }
}
