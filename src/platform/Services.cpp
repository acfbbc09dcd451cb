#include "platform/Services.h"

namespace join::platform {

Services& services() {
    static Services instance;
    return instance;
}

} // namespace join::platform
