// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Tests/Session/ChildProcess.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

/// A message bus of the test's own, which starts the services of its own folder only. It runs from
/// construction on.
class PrivateBus
{
public:
    PrivateBus();
    QString address() const { return address_; }
    /// For `*.service` files; looked at again when a service is asked for that is not known.
    QString servicesFolder() const { return folder_.filePath(QStringLiteral("services")); }
    /// The process that has \a name on the bus; 0 if none has.
    qint64 processOf(const QString &name) const;
    /// The bus dies, without a word to its clients.
    void kill();
    /// Starts again at the same address after kill().
    void start();
    ChildProcess &process() { return *process_; }

private:
    QTemporaryDir folder_;
    QString address_;
    std::unique_ptr<ChildProcess> process_;
};
