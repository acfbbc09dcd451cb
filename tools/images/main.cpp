#include "images/DiskImage.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    try {
        if (argc != 5 || !join::tools::imageKinds().contains(argv[1])) {
            std::cerr << "usage: make-image KIND VOLUME-NAME FOLDER IMAGE\nKIND is one of";
            for (const auto& kind : join::tools::imageKinds())
                std::cerr << ' ' << kind.first;
            std::cerr << '\n';
            return 2;
        }
        join::tools::makeDiskImage(argv[3], argv[2], join::tools::imageKinds().at(argv[1]), argv[4]);
        return 0;
    } catch (const std::exception& exception) {
        std::cerr << "make-image: " << exception.what() << '\n';
        return 1;
    }
}
