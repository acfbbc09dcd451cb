#pragma once

#include "service/StopSignal.h"

#include <httplib.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace join::tools {

/// What the server library hides: the connection of a handler's request, and how much of a streamed body was
/// sent. The library serves a connection on one thread from its handshake to its end, and each thread has one
/// of these.
struct Connection {
    int socket = -1;
    bool closed = false;
    std::uint64_t streamedBytes = 0;

    static Connection& current();

    /// Makes a server's handshakes create a fresh Connection on their thread.
    static void follow(SSL_CTX& context);

    /// Closes the connection at once; the handler's answer is lost.
    void close();
};

/// Returns when the client of the current connection has gone, or the service must stop.
void waitUntilTheClientGoes(StopSignal& stop);

/// Sends bytes of a streamed body and counts them; false when the client has gone.
bool sendBytes(httplib::DataSink& sink, const char* bytes, std::size_t size);

/// Answers with the first half of the text, but announces its whole length.
void sendCut(httplib::Response& response, const std::string& contentType, const std::string& text);

/// Answers with that many bytes, generated as they are sent.
void sendHuge(httplib::Response& response, const std::string& contentType, std::size_t size);

/// Answers with chunks until the client goes or the server stops.
void sendEndless(httplib::Response& response, const std::string& contentType);

} // namespace join::tools
