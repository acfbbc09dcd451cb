#pragma once

#include <memory>

class QApplication;

namespace join::platform {

/// The toolkit, ready for everything else of this folder as long as this lives.
class QtToolkit {
public:
    /// The arguments of main, of which the toolkit sees only the first: a launch URL is none of its business.
    /// They outlive this. Without a display the process ends here, with a line on standard error and status
    /// 69 (EX_UNAVAILABLE).
    explicit QtToolkit(char** arguments);
    ~QtToolkit();
    QtToolkit(const QtToolkit&) = delete;
    QtToolkit& operator=(const QtToolkit&) = delete;

private:
    int argumentCount_ = 1; // the toolkit keeps a reference
    std::unique_ptr<QApplication> application_;
};

} // namespace join::platform
