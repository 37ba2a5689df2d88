// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/ThunarWindow.h"

namespace {

const QString xdotool = QStringLiteral("xdotool");
const QString leftButton = QStringLiteral("1");
const QString rightButton = QStringLiteral("3");

const QString paneRole = QStringLiteral("directory pane");
const QString paneName = QStringLiteral("Icon view");
const QString statusRole = QStringLiteral("statusbar");
const QString menuRole = QStringLiteral("menu");
const QString menuItemRole = QStringLiteral("menu item");

/// A loaded machine, and a build with sanitizers, take their time.
constexpr std::chrono::seconds patience{30};

/// What is hidden is said to be far away.
bool isOnScreen(const Accessible &object)
{
    return QRect(QPoint(), VirtualScreen::usualSize).contains(object.extents());
}

} // namespace

void ThunarWindow::open(const QString &program, const QString &folder, const QString &status,
                        QProcessEnvironment environment)
{
    // It finds icons and types where the system has them.
    environment.remove(QStringLiteral("XDG_DATA_DIRS"));
    environment.insert(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
    thunar_ = std::make_unique<ChildProcess>(program, QStringList(folder), environment);
    const QString window = screen_.windowOf(thunar_->pid());
    ASSERT_FALSE(window.isEmpty()) << thunar_->errors().constData();
    ASSERT_TRUE(screen_.activate(window));
    ASSERT_TRUE(waitUntil([&] { return this->status().startsWith(status); }, patience))
        << qPrintable(this->status());
}

QString ThunarWindow::status() const
{
    const QList<Accessible> programs = reader_.programs();
    for (const Accessible &program : programs) {
        const QList<Accessible> bars = program.findAll(statusRole);
        if (!bars.isEmpty())
            return bars.constFirst().name();
    }
    return {};
}

/// What is shown with this role and this name, once it is there.
std::optional<Accessible> ThunarWindow::shown(const QString &role, const QString &name) const
{
    const QList<Accessible> programs = reader_.programs();
    for (const Accessible &program : programs) {
        if (const auto found = program.find(role, name); found && isOnScreen(*found))
            return found;
    }
    return std::nullopt;
}

void ThunarWindow::click(const QPoint &place, const QString &button) const
{
    screen_.ask(xdotool, {QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y()),
                          QStringLiteral("click"), button});
}

/// Clicks what comes to be shown with this role and this name.
void ThunarWindow::choose(const QString &role, const QString &name) const
{
    std::optional<Accessible> object;
    ASSERT_TRUE(waitUntil(
        [&] {
            object = shown(role, name);
            return object.has_value();
        },
        patience))
        << qPrintable(name) << thunar_->errors().constData();
    click(object->extents().center(), leftButton);
}

void ThunarWindow::openMenuOfBackground() const
{
    const std::optional<Accessible> pane = shown(paneRole, paneName);
    ASSERT_TRUE(pane);
    // What is in it is in the opposite corner.
    click(pane->extents().bottomRight() - QPoint(40, 40), rightButton);
}

void ThunarWindow::openMenuOfInside(const QString &name) const
{
    screen_.typeKey(QStringLiteral("ctrl+a"));
    ASSERT_TRUE(waitUntil([&] { return status().contains(name); }, patience)) << qPrintable(status());
    screen_.typeKey(QStringLiteral("shift+F10"));
}

void ThunarWindow::choosePreset(const QString &title, const QString &label) const
{
    ASSERT_NO_FATAL_FAILURE(choose(menuRole, title));
    ASSERT_NO_FATAL_FAILURE(choose(menuItemRole, label));
}
