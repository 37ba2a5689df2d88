// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/TQProcess.h"

#include "Platform/Desktop/Bundle.h"
#include "Source/System/TQProcessesEnumerater.h"
#include "Toolkit/WindowManager.h"

#include <QFileInfo>

#include <array>
#include <bit>
#include <cmath>

namespace {

const QString noProcessName = QStringLiteral("no process");
/// How a name that is not known and a code of 0 are printed.
const QString nullText = QStringLiteral("(null)");
const QString nullCode = QStringLiteral("NULL");
constexpr double launchDatesPerSecond = 60.0;

template <typename Predicate>
QList<TQProcess> everyProcessWhere(Predicate holds)
{
    QList<TQProcess> processes = TQProcess::everyProcess();
    processes.removeIf([&holds](const TQProcess &process) { return !holds(process); });
    return processes;
}

std::optional<TQProcess> processIf(const std::optional<ProcessSerialNumber> &serialNumber)
{
    if (!serialNumber)
        return std::nullopt;
    return TQProcess::initWithProcessSerialNumber(*serialNumber);
}

std::optional<ProcessSerialNumber> frontSerialNumber()
{
    const std::optional<pid_t> pid = WindowManager::activeProcess();
    return pid ? ProcessTable::getProcessForPID(*pid) : std::nullopt;
}

/// The bytes of the code in the order of this machine's memory.
QString codeText(quint32 code)
{
    if (code == 0)
        return nullCode;
    const auto bytes = std::bit_cast<std::array<char, sizeof code>>(code);
    return QString::fromLatin1(bytes.data(), bytes.size());
}

} // namespace

struct TQProcess::State
{
    ProcessSerialNumber serialNumber;
    std::optional<ProcessInformation> infoRec;
    QString name;
    QUrl url;
};

TQProcess::TQProcess()
    : state_(std::make_shared<State>())
{
}

TQProcess TQProcess::initWithProcessSerialNumber(const ProcessSerialNumber &serialNumber)
{
    TQProcess process;
    process.setProcessSerialNumber(serialNumber);
    return process;
}

std::optional<TQProcess> TQProcess::initWithCurrentProcess()
{
    return processIf(ProcessTable::getCurrentProcess());
}

std::optional<TQProcess> TQProcess::initWithFrontProcess()
{
    return processIf(frontSerialNumber());
}

std::optional<TQProcess> TQProcess::initWithProcessID(pid_t pid)
{
    return processIf(ProcessTable::getProcessForPID(pid));
}

TQProcessesEnumerater TQProcess::processesEnumerater()
{
    return TQProcessesEnumerater::processesEnumerater();
}

QList<TQProcess> TQProcess::everyProcess()
{
    return processesEnumerater().allObjects();
}

QList<TQProcess> TQProcess::everyProcessNamed(const QString &name)
{
    QList<TQProcess> processes;
    for (const ProcessSerialNumber &serialNumber : ProcessTable::processesNamed(name))
        processes.append(initWithProcessSerialNumber(serialNumber));
    return processes;
}

std::optional<TQProcess> TQProcess::firstProcessNamed(const QString &name)
{
    const QList<TQProcess> processes = everyProcessNamed(name);
    return processes.isEmpty() ? std::nullopt : std::optional(processes.constFirst());
}

std::optional<TQProcess> TQProcess::processForURL(const QUrl &url)
{
    if (url.isEmpty())
        return std::nullopt;
    TQProcessesEnumerater processes = processesEnumerater();
    for (const TQProcess &process : processes.allObjects()) {
        if (process.url() == url)
            return process;
    }
    return std::nullopt;
}

std::optional<TQProcess> TQProcess::processForPath(const QString &path)
{
    return processForURL(QUrl::fromLocalFile(path));
}

std::optional<TQProcess> TQProcess::processForApplicationPath(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists())
        return std::nullopt;
    if (!file.isDir())
        return processForPath(path);
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(path);
    return bundle ? processForPath(bundle->expectedExecutablePath()) : std::nullopt;
}

std::optional<TQProcess> TQProcess::processForApplicationURL(const QUrl &url)
{
    return processForApplicationPath(url.path());
}

QList<TQProcess> TQProcess::everyProcessBeginingWithPath(const QString &path)
{
    return everyProcessWhere(
        [&path](const TQProcess &process) { return !process.path().isNull() && process.path() == path; });
}

QList<TQProcess> TQProcess::everyProcessBeginingWithURL(const QUrl &url)
{
    const QByteArray text = url.toEncoded();
    return everyProcessWhere([&text](const TQProcess &process) {
        return !process.url().isEmpty() && process.url().toEncoded() == text;
    });
}

void TQProcess::setProcessSerialNumber(const ProcessSerialNumber &serialNumber)
{
    *state_ = {};
    state_->serialNumber = serialNumber;
}

ProcessSerialNumber TQProcess::processSerialNumber() const
{
    return state_->serialNumber;
}

const std::optional<ProcessInformation> &TQProcess::fillProcessInfoRec() const
{
    if (!state_->infoRec)
        state_->infoRec = ProcessTable::getProcessInformation(state_->serialNumber);
    return state_->infoRec;
}

const std::optional<ProcessInformation> &TQProcess::refillProcessInfoRec() const
{
    state_->infoRec.reset();
    return fillProcessInfoRec();
}

bool TQProcess::isNoProcess() const
{
    return ProcessTable::sameProcess(state_->serialNumber, kNoProcess);
}

bool TQProcess::isSystemProcess() const
{
    return ProcessTable::sameProcess(state_->serialNumber, kSystemProcess);
}

bool TQProcess::isValid() const
{
    return refillProcessInfoRec().has_value();
}

bool TQProcess::isFrontProcess() const
{
    const std::optional<ProcessSerialNumber> front = frontSerialNumber();
    return front && ProcessTable::sameProcess(*front, state_->serialNumber);
}

bool TQProcess::isCurrentProcess() const
{
    const std::optional<ProcessSerialNumber> current = ProcessTable::getCurrentProcess();
    return current && ProcessTable::sameProcess(*current, state_->serialNumber);
}

bool TQProcess::isEqual(const TQProcess &other) const
{
    return ProcessTable::sameProcess(state_->serialNumber, other.state_->serialNumber);
}

bool TQProcess::makeFrontProcess() const
{
    return makeFrontProcessFrontWindowOnly(false);
}

bool TQProcess::makeFrontProcessFrontWindowOnly(bool frontWindowOnly) const
{
    const std::optional<pid_t> pid = ProcessTable::getProcessPID(state_->serialNumber);
    return pid && WindowManager::activateProcess(*pid, frontWindowOnly ? WindowManager::Windows::Front
                                                                       : WindowManager::Windows::All);
}

bool TQProcess::wakeUpProcess() const
{
    return ProcessTable::wakeUpProcess(state_->serialNumber);
}

QString TQProcess::name() const
{
    if (state_->name.isNull()) {
        if (isNoProcess())
            state_->name = noProcessName;
        else if (const std::optional<ProcessInformation> &information = refillProcessInfoRec())
            state_->name = information->name;
    }
    return state_->name;
}

quint32 TQProcess::type() const
{
    const std::optional<ProcessInformation> &information = fillProcessInfoRec();
    return information ? Bundle::codesOfExecutable(information->path).type : 0;
}

quint32 TQProcess::signature() const
{
    const std::optional<ProcessInformation> &information = fillProcessInfoRec();
    return information ? Bundle::codesOfExecutable(information->path).signature : 0;
}

quint32 TQProcess::mode() const
{
    const std::optional<ProcessInformation> &information = fillProcessInfoRec();
    return information ? information->mode : 0;
}

std::optional<TQProcess> TQProcess::launcher() const
{
    const std::optional<ProcessInformation> &information = fillProcessInfoRec();
    if (!information || information->launcher == kNoProcess)
        return std::nullopt;
    return initWithProcessSerialNumber(information->launcher);
}

double TQProcess::launchTime() const
{
    const std::optional<ProcessInformation> &information = fillProcessInfoRec();
    return information ? information->launchDate / launchDatesPerSecond : 0.0;
}

QUrl TQProcess::url() const
{
    if (state_->url.isEmpty()) {
        const std::optional<ProcessInformation> &information = refillProcessInfoRec();
        if (information && !information->path.isEmpty())
            state_->url = QUrl::fromLocalFile(information->path);
    }
    return state_->url;
}

QString TQProcess::path() const
{
    const QUrl location = url();
    return location.isEmpty() ? QString() : location.toLocalFile();
}

pid_t TQProcess::processID() const
{
    return ProcessTable::getProcessPID(state_->serialNumber).value_or(-1);
}

QString TQProcess::description() const
{
    if (isNoProcess())
        return name();
    const double time = launchTime();
    const QString numbers = QString::asprintf("procces ID: %i, time:[%ih %im %.1fs]", int(processID()),
                                              int(time / 3600), int(time / 60) % 60, std::fmod(time, 60.0));
    return QStringLiteral("name:\"%1\", %2, type:'%3', signature:'%4'")
        .arg(name().isNull() ? nullText : name(), numbers, codeText(type()), codeText(signature()));
}
