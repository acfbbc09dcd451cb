#pragma once

#include "service/Service.h"
#include "support/Child.h"
#include "support/TemporaryFolder.h"

#include <string>
#include <vector>

namespace join::test {

/// A service that runs, and a client that trusts it.
class Running {
public:
    explicit Running(const std::vector<std::string>& options = {})
        : requests_(folder_ / "log"), service_(join::tools::parseScenario(options), certificate_, requests_),
          client_("127.0.0.1", service_.port()) {
        client_.set_ca_cert_path(writeFile(folder_ / "certificate.pem", certificate_.pem()));
        client_.enable_server_certificate_verification(true);
    }

    httplib::Result get(const std::string& target) { return client_.Get(target); }
    httplib::SSLClient& client() { return client_; }
    int port() const { return service_.port(); }

    std::string log() const { return contentsOf(folder_ / "log"); }

    /// Whether a line of the log comes to end so.
    bool logs(const std::string& ending) const {
        return eventually([&] { return log().ends_with(ending + '\n'); });
    }

private:
    TemporaryFolder folder_;
    join::tools::Certificate certificate_;
    join::tools::RequestLog requests_;
    join::tools::Service service_;
    httplib::SSLClient client_;
};

} // namespace join::test
