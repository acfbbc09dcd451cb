#include "platform/qt/QtTasks.h"

#include "platform/Exception.h"

#include <QFile>
#include <QProcess>
#include <QStringList>

#include <fcntl.h>
#include <linux/close_range.h>
#include <unistd.h>

#include <utility>

namespace join::platform {

namespace {

QString toQString(const std::string& text) { return QFile::decodeName(QByteArray::fromStdString(text)); }

/// Children get the standard streams only, whatever a library forgot to mark.
void closeDescriptorsOnExec() { ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC); }

void describe(QProcess& process, const std::string& path, const Program& program) {
    QStringList arguments;
    for (const std::string& argument : program.arguments)
        arguments << toQString(argument);
    process.setProgram(toQString(path));
    process.setArguments(arguments);
    process.setWorkingDirectory(toQString(program.workingDirectory));
}

/// Waits for its end, and sees to it when it does not come. One that not even the kernel can end is left.
void awaitEnd(QProcess& process, std::chrono::milliseconds patience) {
    constexpr int toClearUp = 2000; // milliseconds
    if (process.waitForFinished(static_cast<int>(patience.count())))
        return;
    process.terminate();
    if (process.waitForFinished(toClearUp))
        return;
    process.kill();
    process.waitForFinished(toClearUp);
}

[[noreturn]] void raiseNotStarted(const Program& program, const QProcess& process) {
    throw Exception("Cannot start " + program.path + ": " + process.errorString().toStdString());
}

} // namespace

QtTasks::QtTasks(SystemRoot root, std::filesystem::path helpersFolder)
    : root_(std::move(root)), helpersFolder_(std::move(helpersFolder)) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(helpersFolder_, error))
        if (Descriptor opened = openForReading(AT_FDCWD, entry.path().c_str()))
            helpers_.emplace(entry.path().filename(), std::move(opened));
}

TaskResult QtTasks::run(const Program& program) {
    QProcess process;
    describe(process, realPath(program.path), program);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    closeDescriptorsOnExec();
    process.start(QIODevice::ReadOnly);
    if (!process.waitForStarted(-1))
        raiseNotStarted(program, process);
    awaitEnd(process, program.patience);
    const bool exited =
        process.state() == QProcess::NotRunning && process.exitStatus() == QProcess::NormalExit;
    return {exited, process.exitCode(), process.readAllStandardOutput().toStdString()};
}

void QtTasks::start(const Program& program) {
    QProcess process;
    describe(process, realPath(program.path), program);
    closeDescriptorsOnExec();
    if (!process.startDetached())
        raiseNotStarted(program, process);
}

bool QtTasks::startDetached(const Program& program) {
    QProcess process;
    describe(process, realPath(program.path), program);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    closeDescriptorsOnExec();
    return process.startDetached();
}

std::string QtTasks::realPath(const std::string& program) const {
    std::filesystem::path path = root_.toReal(program);
    std::error_code error;
    if (path.is_relative())
        path = helpersFolder_ / path; // never looked for on the PATH, nor where we happen to be
    else if (std::filesystem::exists(path, error))
        return path;
    const auto helper = helpers_.find(path.filename());
    return helper == helpers_.end() ? path.string() : "/proc/self/fd/" + std::to_string(helper->second.get());
}

} // namespace join::platform
