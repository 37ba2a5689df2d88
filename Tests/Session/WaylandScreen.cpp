// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/WaylandScreen.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

const QString waylandSocket = QStringLiteral("wayland-test");

/// A key is held for long on a loaded machine, and nobody means to: it repeats after a minute.
const QString configuration = QStringLiteral(R"([core]
backend=x11-backend.so
shell=kiosk-shell.so
idle-time=0
[keyboard]
repeat-delay=60000
[output]
name=X1
mode=%1x%2
)");

} // namespace

WaylandScreen::WaylandScreen(const TemporaryHome &home, QSize size)
    : Screen(home, size)
{
    const QString configurationPath = folder_.filePath(QStringLiteral("weston.ini"));
    QFile file(configurationPath);
    const QString text = configuration.arg(size.width()).arg(size.height());
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("%s", qPrintable(file.errorString()));
    file.close();
    compositor_ = std::make_unique<ChildProcess>(QStringLiteral("weston"),
                                                 QStringList{QStringLiteral("--config=") + configurationPath,
                                                             QStringLiteral("--socket=") + waylandSocket,
                                                             QStringLiteral("--use-pixman")},
                                                 ownEnvironment());
    const QString socketPath = home.runtimeFolder() + u'/' + waylandSocket;
    QString window;
    const bool isReady = waitUntil([&] {
        window = QString::fromLatin1(
            ask(xdotool, {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                          QStringLiteral("--class"), QStringLiteral("^Weston Compositor$")}));
        return !compositor_->isRunning() || (QFileInfo::exists(socketPath) && !window.isEmpty());
    });
    if (!isReady || !compositor_->isRunning())
        qFatal("no compositor: %s%s", compositor_->output().constData(), compositor_->errors().constData());
    // It learns where the mouse is when that comes into its window.
    ask(xdotool, {QStringLiteral("windowmove"), window, QString::number(size.width()), QStringLiteral("0")});
    ask(xdotool, {QStringLiteral("windowmove"), window, QStringLiteral("0"), QStringLiteral("0")});
    // There is no window manager, which would do it.
    ask(xdotool, {QStringLiteral("windowfocus"), QStringLiteral("--sync"), window});
}

WaylandScreen::~WaylandScreen() = default;

QProcessEnvironment WaylandScreen::environmentFrom(QProcessEnvironment environment) const
{
    environment.remove(displayVariable);
    environment.insert(QStringLiteral("WAYLAND_DISPLAY"), waylandSocket);
    environment.insert(QStringLiteral("XDG_SESSION_TYPE"), QStringLiteral("wayland"));
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("wayland"));
    environment.insert(QStringLiteral("QT_LINUX_ACCESSIBILITY_ALWAYS_ON"), QStringLiteral("1"));
    // What is said between program and compositor is written to the program's standard error.
    environment.insert(QStringLiteral("WAYLAND_DEBUG"), QStringLiteral("client"));
    return environment;
}

bool WaylandScreen::givesKeyboardTo(ChildProcess &program) const
{
    static const QRegularExpression change(QStringLiteral("wl_keyboard[@#][0-9]+\\.(enter|leave)\\("));
    QString last;
    const QString said = QString::fromUtf8(program.errors());
    for (const QRegularExpressionMatch &match : change.globalMatch(said))
        last = match.captured(1);
    return last == u"enter";
}

std::function<bool()> WaylandScreen::arrivalOfDrag(ChildProcess &dragging) const
{
    // The program below the mouse answers each step, and the one that drags is told what. It may be behind by
    // all the steps that led here.
    const auto answers = [&dragging] { return dragging.errors().count(".target("); };
    return [answers, before = qsizetype(-1)]() mutable {
        if (before < 0)
            before = answers();
        if (answers() <= before + stepsOfADrag)
            return false;
        before = -1;
        return true;
    };
}
