#pragma once

namespace join::platform {

/// Refuses to the calling thread, for good and with everything that it starts, the system calls by which it
/// could reach the network, the memory of other processes, other namespaces and mounts, or parts of the
/// kernel that have nothing to do with its work; and those that are younger than this program (seccomp(2)).
///
/// Given the path with which it is about to execute a program, it can execute nothing else; and the program
/// cannot execute anything again, since that address means nothing in it, and can neither start processes nor
/// send signals. Threads are allowed.
///
/// Makes only calls that are allowed between fork and exec. Returns false, with the reason in errno, if the
/// kernel knows no such filters. Does nothing on processors other than x86-64 and AArch64.
bool refuseSystemCalls(const char* program);

} // namespace join::platform
