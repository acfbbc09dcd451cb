#pragma once

#include <httplib.h>

#include <algorithm>
#include <initializer_list>

namespace join::tools {

/// Whether the query has the name, with one of the values if any are given.
inline bool gives(const httplib::Request& request, const char* name,
                  std::initializer_list<const char*> values = {}) {
    if (!request.has_param(name))
        return false;
    return values.size() == 0 ||
           std::find(values.begin(), values.end(), request.get_param_value(name)) != values.end();
}

} // namespace join::tools
