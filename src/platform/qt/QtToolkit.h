#pragma once

#include <memory>

class QApplication;

namespace join::platform {

/// The toolkit, ready for everything else in this folder for as long as this object lives.
class QtToolkit {
public:
    /// Takes the arguments of main, which must outlive this object. The toolkit sees only the first: a launch
    /// URL does not concern it. Without a display, the process ends here with a line on standard error and
    /// status 69 (EX_UNAVAILABLE).
    explicit QtToolkit(char** arguments);
    ~QtToolkit();
    QtToolkit(const QtToolkit&) = delete;
    QtToolkit& operator=(const QtToolkit&) = delete;

private:
    int argumentCount_ = 1; // the toolkit keeps a reference to it
    std::unique_ptr<QApplication> application_;
};

} // namespace join::platform
