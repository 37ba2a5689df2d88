// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Processes/ProcessTable.h"

#include <QList>
#include <QString>
#include <QUrl>
#include <memory>
#include <optional>
#include <sys/types.h>

class TQProcessesEnumerater;

/// One process, known by its serial number. A value; copies share what is fetched of it, once and when first
/// asked for. A process that ends simply gives the values for failure; nothing here reports any.
class TQProcess
{
public:
    static TQProcess processWithProcessSerialNumber(const ProcessSerialNumber &serialNumber)
    {
        return initWithProcessSerialNumber(serialNumber);
    }
    static std::optional<TQProcess> currentProcess() { return initWithCurrentProcess(); }
    /// The one whose window has the focus; none where no window manager tells.
    static std::optional<TQProcess> frontProcess() { return initWithFrontProcess(); }
    static std::optional<TQProcess> processWithProcessID(pid_t pid) { return initWithProcessID(pid); }

    static TQProcess initWithProcessSerialNumber(const ProcessSerialNumber &serialNumber);
    static std::optional<TQProcess> initWithCurrentProcess();
    static std::optional<TQProcess> initWithFrontProcess();
    static std::optional<TQProcess> initWithProcessID(pid_t pid);

    static TQProcessesEnumerater processesEnumerater();
    /// In the order of the table.
    static QList<TQProcess> everyProcess();
    /// Exactly that name, and case counts.
    static QList<TQProcess> everyProcessNamed(const QString &name);
    static std::optional<TQProcess> firstProcessNamed(const QString &name);
    static std::optional<TQProcess> processForURL(const QUrl &url);
    static std::optional<TQProcess> processForPath(const QString &path);
    /// For the path of an application bundle, whose executable may have been removed since it was started, or
    /// of a plain executable.
    static std::optional<TQProcess> processForApplicationPath(const QString &path);
    static std::optional<TQProcess> processForApplicationURL(const QUrl &url);
    /// Those at exactly that path; what begins with it is not asked.
    static QList<TQProcess> everyProcessBeginingWithPath(const QString &path);
    /// Those at exactly that URL.
    static QList<TQProcess> everyProcessBeginingWithURL(const QUrl &url);

    ProcessSerialNumber processSerialNumber() const;

    bool isNoProcess() const;
    bool isSystemProcess() const;
    /// Asks again whether it runs.
    bool isValid() const;
    bool isFrontProcess() const;
    bool isCurrentProcess() const;
    /// Whether it is the same process.
    bool isEqual(const TQProcess &other) const;
    friend bool operator==(const TQProcess &one, const TQProcess &other) { return one.isEqual(other); }

    bool makeFrontProcess() const;
    bool makeFrontProcessFrontWindowOnly(bool frontWindowOnly) const;
    bool wakeUpProcess() const;

    /// Null if it cannot be fetched; the next call tries again.
    QString name() const;
    quint32 type() const;
    quint32 signature() const;
    quint32 mode() const;
    std::optional<TQProcess> launcher() const;
    /// In seconds since the system started.
    double launchTime() const;
    /// The executable's; invalid if it cannot be fetched, and the next call tries again.
    QUrl url() const;
    QString path() const;
    /// -1 if it has ended.
    pid_t processID() const;
    /// For people who read logs.
    QString description() const;

private:
    struct State;

    TQProcess();
    void setProcessSerialNumber(const ProcessSerialNumber &serialNumber);
    /// Fetches the information unless it was fetched before; none if it cannot be.
    const std::optional<ProcessInformation> &fillProcessInfoRec() const;
    /// The same, fetched anew.
    const std::optional<ProcessInformation> &refillProcessInfoRec() const;

    std::shared_ptr<State> state_;
};
