#include "base/Logging.h"

#include "platform/Exception.h"
#include "platform/Log.h"
#include "platform/Services.h"

namespace join {

void writeLog(std::string_view message) { platform::services().log->write(message); }

void logSessionEnd() { writeLog('\n' + std::string(133, '-') + '\n'); }

void logExceptionBanner(std::string_view method, const std::exception& exception) {
    log("%s : ************************ EXCEPTION ************************ \n Description :  %@ // Call Stack "
        "Symbol : %@",
        method, exception.what(), platform::callStackOf(exception));
}

} // namespace join
