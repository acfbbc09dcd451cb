#pragma once

#include "base/Format.h"

#include <exception>
#include <string_view>
#include <type_traits>

namespace join {

/// Writes one complete message to the platform's log.
void writeLog(std::string_view message);

/// Logs a message. If the format begins with "%s : ", the first argument is the name of the operation that
/// logs.
template <class... Arguments>
void log(Format<std::type_identity_t<Arguments>...> format, const Arguments&... arguments) {
    writeLog(detail::formatPieces(format.text(), {detail::FormatArgument(arguments)...}));
}

/// Writes the line that ends a session in the log file.
void logSessionEnd();

/// Writes the exception line of the singletons and of the log upload.
void logExceptionBanner(std::string_view method, const std::exception& exception);

/// Runs an operation of the delegate, which may take its own name for its log lines. Logs an exception that ends
/// it, and returns normally.
template <class Operation>
void reportingExceptions(std::string_view method, Operation&& operation) {
    try {
        if constexpr (std::is_invocable_v<Operation, std::string_view>)
            operation(method);
        else
            operation();
    } catch (const std::exception& exception) {
        log("Exception in %s : %@", method, exception.what());
    }
}

} // namespace join
