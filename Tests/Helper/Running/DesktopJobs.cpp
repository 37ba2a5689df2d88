// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Does what the file dialogs of some desktops do in the programs that show them: keeps a program from ending
// while it works, again and again, and says so on its standard error.

#include <QEventLoopLocker>
#include <QGenericPlugin>
#include <QTimer>

#include <chrono>
#include <cstdio>

class DesktopJobs final : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.qt-project.Qt.QGenericPluginFactoryInterface" FILE "DesktopJobs.json")

public:
    QObject *create(const QString &, const QString &) override
    {
        auto *timer = new QTimer;
        connect(timer, &QTimer::timeout, timer, [] {
            std::fputs("a job of the desktop was done\n", stderr);
            const QEventLoopLocker job;
        });
        timer->start(std::chrono::milliseconds(20));
        return timer;
    }
};

#include "DesktopJobs.moc"
