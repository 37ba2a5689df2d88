// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/Launcher.h"

#include "Toolkit/WindowActivation.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace {

/// How the library calls its windows there: this, or with the kind of graphics after it.
const QString waylandPlatform = QStringLiteral("wayland");

/// Before a window was shown once, what is around it is not known.
QSize sizeWithFrame(const QWidget &window)
{
    if (window.isVisible())
        return window.frameGeometry().size();
    const int title = window.style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &window);
    const int edge = window.style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth, nullptr, &window);
    return window.size() + QSize(2 * edge, title + 2 * edge);
}

} // namespace

Launcher::Launcher(LauncherWindow::Handlers handlers, std::function<void()> closed)
    : handlers_(std::move(handlers))
    , closed_(std::move(closed))
{
}

Launcher::~Launcher()
{
    if (window_)
        window_->disconnect();
    delete window_;
}

void Launcher::open(const Content &content, const QByteArray &activationToken)
{
    const bool wasOpen = isOpen();
    if (!wasOpen) {
        // One that was closed goes by itself.
        window_ = new LauncherWindow(handlers_);
        window_->setAttribute(Qt::WA_DeleteOnClose);
        QObject::connect(window_, &QDialog::finished, window_, [this] { closed_(); });
    }
    window_->setPresets(content.labels, content.problem);
    if (!wasOpen || !content.named.isEmpty())
        window_->setPlaces(content.named, content.recent);
    window_->setCanUndo(content.canUndo);
    window_->beginTyping();
    place(*window_);
    WindowActivation::bringToFront(*window_, activationToken);
}

void Launcher::setPresets(const QStringList &labels, const QString &problem)
{
    if (isOpen())
        window_->setPresets(labels, problem);
}

void Launcher::close()
{
    if (window_)
        window_->close();
}

bool Launcher::isOpen() const
{
    return window_ && window_->isVisible();
}

QPoint Launcher::placeAt(const QPoint &pointer, const QSize &size, const QRect &screen)
{
    const auto within = [](int wanted, int length, int from, int room) {
        return std::clamp(wanted, from, from + std::max(room - length, 0));
    };
    return {within(pointer.x(), size.width(), screen.left(), screen.width()),
            within(pointer.y(), size.height(), screen.top(), screen.height())};
}

void Launcher::place(QWidget &window) const
{
    const QPoint pointer = QCursor::pos();
    const QScreen *screen = QGuiApplication::screenAt(pointer);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QRect room = screen->availableGeometry();
    if (!window.isVisible()) {
        window.ensurePolished();
        window.adjustSize();
        const QSize most = room.size() - (sizeWithFrame(window) - window.size());
        // Of one width only: window managers that put windows side by side take it for a dialog then.
        window.setFixedWidth(std::min(window.width(), most.width()));
        window.resize(window.width(), std::min(window.height(), most.height()));
    }
    if (!QGuiApplication::platformName().startsWith(waylandPlatform))
        window.move(placeAt(pointer, sizeWithFrame(window), room));
}
