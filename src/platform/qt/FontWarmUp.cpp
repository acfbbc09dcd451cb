#include "platform/qt/FontWarmUp.h"

#include <fontconfig/fontconfig.h>

namespace join::platform {

std::jthread warmUpFonts() {
    return std::jthread([] { FcInit(); }); // once in a process; the toolkit's own call waits for this one
}

} // namespace join::platform
