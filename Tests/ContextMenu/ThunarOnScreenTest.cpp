// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The whole road: a person chooses a preset in the menu of a real file manager.

#include "ContextMenu/Registration.h"
#include "Tests/ContextMenu/MenuHome.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/ScreenReader.h"
#include "Tests/Session/VirtualScreen.h"

#include <QFileInfo>

namespace {

const QString xdotool = QStringLiteral("xdotool");
const QString leftButton = QStringLiteral("1");
const QString rightButton = QStringLiteral("3");

const QString paneRole = QStringLiteral("directory pane");
const QString paneName = QStringLiteral("Icon view");
const QString statusRole = QStringLiteral("statusbar");
const QString menuRole = QStringLiteral("menu");
const QString menuItemRole = QStringLiteral("menu item");

class ThunarOnScreenTest : public MenuHome
{
protected:
    ThunarOnScreenTest()
        : MenuHome(Programs::OfThisMachine)
        , environment_(home_.environment(bus_.address()))
        , screen_(home_)
        , reader_(bus_.address(), screen_.environmentFrom(environment_))
        , folder_(makeFolder(in(QStringLiteral("it's shown"))))
    {
    }

    /// Opens a window that shows the folder, with one folder in it, to a user with the menu.
    void open(const QByteArray &calledHelper)
    {
        makeFolder(folder_ + u'/' + inside_);
        makeFolder(config(QStringLiteral("Thunar")));
        ASSERT_TRUE(Registration::registerWith(calledHelper));
        QProcessEnvironment environment = screen_.environmentFrom(environment_);
        // It finds icons and types where the system has them.
        environment.remove(QStringLiteral("XDG_DATA_DIRS"));
        environment.insert(QStringLiteral("GSETTINGS_BACKEND"), QStringLiteral("memory"));
        thunar_ =
            std::make_unique<ChildProcess>(QStringLiteral(QUENBY_THUNAR), QStringList(folder_), environment);
        const QString window = screen_.windowOf(thunar_->pid());
        ASSERT_FALSE(window.isEmpty()) << thunar_->errors().constData();
        ASSERT_TRUE(screen_.activate(window));
        ASSERT_TRUE(waitUntil([this] { return status().startsWith(QStringLiteral("1 folder")); }))
            << qPrintable(status());
    }

    /// What is shown with this role and this name, once it is there.
    std::optional<Accessible> shown(const QString &role, const QString &name) const
    {
        const QList<Accessible> programs = reader_.programs();
        for (const Accessible &program : programs) {
            if (const auto found = program.find(role, name); found && isOnScreen(*found))
                return found;
        }
        return std::nullopt;
    }
    /// What is hidden is said to be far away.
    static bool isOnScreen(const Accessible &object)
    {
        return QRect(QPoint(), VirtualScreen::usualSize).contains(object.extents());
    }

    /// What the bar below the folder says of it, or of what is selected in it.
    QString status() const
    {
        const QList<Accessible> programs = reader_.programs();
        for (const Accessible &program : programs) {
            const QList<Accessible> bars = program.findAll(statusRole);
            if (!bars.isEmpty())
                return bars.constFirst().name();
        }
        return {};
    }

    void click(const QPoint &place, const QString &button) const
    {
        screen_.ask(xdotool, {QStringLiteral("mousemove"), QString::number(place.x()),
                              QString::number(place.y()), QStringLiteral("click"), button});
    }

    /// Clicks what comes to be shown with this role and this name.
    void choose(const QString &role, const QString &name) const
    {
        std::optional<Accessible> object;
        ASSERT_TRUE(waitUntil([&] {
            object = shown(role, name);
            return object.has_value();
        })) << qPrintable(name)
            << thunar_->errors().constData();
        click(object->extents().center(), leftButton);
    }

    void openMenuOfBackground() const
    {
        const std::optional<Accessible> pane = shown(paneRole, paneName);
        ASSERT_TRUE(pane);
        // The only thing in it is in the opposite corner.
        click(pane->extents().bottomRight() - QPoint(40, 40), rightButton);
    }
    void openMenuOfInside() const
    {
        screen_.typeKey(QStringLiteral("ctrl+a"));
        ASSERT_TRUE(waitUntil([this] { return status().contains(inside_); })) << qPrintable(status());
        screen_.typeKey(QStringLiteral("shift+F10"));
    }
    void choosePreset(const QString &label) const
    {
        ASSERT_NO_FATAL_FAILURE(choose(menuRole, PresetMenu::title));
        ASSERT_NO_FATAL_FAILURE(choose(menuItemRole, label));
    }

    PrivateBus bus_;
    QProcessEnvironment environment_;
    VirtualScreen screen_;
    ScreenReader reader_;
    std::unique_ptr<ChildProcess> thunar_;
    QString folder_;
    const QString inside_ = QStringLiteral("in %f $(id)");
};

} // namespace

TEST_F(ThunarOnScreenTest, APresetIsChosenOnAFolder)
{
    const QString label = QStringLiteral("it's \"a\" %f & _b_ $(id)");
    storePresets({QStringLiteral("Another"), label});
    ASSERT_NO_FATAL_FAILURE(open(helper()));
    ASSERT_NO_FATAL_FAILURE(openMenuOfInside());
    ASSERT_NO_FATAL_FAILURE(choosePreset(label));
    expectCall(label, {(folder_ + u'/' + inside_).toUtf8()});
}

TEST_F(ThunarOnScreenTest, APresetChosenOnTheBackgroundIsCreatedThere)
{
    const QString label = QStringLiteral("Client Project");
    storePresets({QStringLiteral("Another"), label},
                 {{QStringLiteral("children"),
                   QVariantList{QVariantMap{{QStringLiteral("filename"), QStringLiteral("Letters")},
                                            {QStringLiteral("isFolder"), true},
                                            {QStringLiteral("permissions"), QStringLiteral("750")}}}},
                  {QStringLiteral("isFolder"), true}});
    ASSERT_NO_FATAL_FAILURE(open(QByteArrayLiteral(QUENBY_HELPER)));
    ASSERT_NO_FATAL_FAILURE(openMenuOfBackground());
    ASSERT_NO_FATAL_FAILURE(choosePreset(label));
    const QFileInfo created(folder_ + QStringLiteral("/Letters"));
    const auto isCreated = [&created] {
        return QFileInfo(created.filePath()).permission(QFile::ReadGroup | QFile::ExeGroup);
    };
    EXPECT_TRUE(waitUntil(isCreated)) << thunar_->errors().constData();
    EXPECT_TRUE(QFileInfo(created.filePath()).isDir());
}
