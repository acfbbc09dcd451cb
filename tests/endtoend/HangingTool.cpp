#include <unistd.h>

/// Stands in for a tool that never ends.
int main() { return ::pause(); }
