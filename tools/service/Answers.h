#pragma once

#include "service/Scenario.h"

#include <string>
#include <string_view>

namespace join::tools {

struct Answer {
    std::string contentType;
    std::string body;
};

/// Whether an update of the agent is needed, and where from: JSON.
Answer versionAnswer(const Scenario& scenario);

/// Whether the session key is valid: XML.
Answer keyAnswer(const Scenario& scenario, std::string_view key);

/// The answer with its body spoilt in the scenario's way. Faults of the connection leave it as it is.
Answer spoilt(Answer answer, Broken broken);

} // namespace join::tools
