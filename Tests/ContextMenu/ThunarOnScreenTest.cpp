// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The whole road: a person chooses a preset in the menu of a real file manager.

#include "ContextMenu/Registration.h"
#include "Tests/ContextMenu/MenuHome.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/ThunarWindow.h"

#include <QFileInfo>

namespace {

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
        ASSERT_NO_FATAL_FAILURE(thunar_.open(QStringLiteral(QUENBY_THUNAR), folder_,
                                             QStringLiteral("1 folder"),
                                             screen_.environmentFrom(environment_)));
    }
    void choosePreset(const QString &label) const { thunar_.choosePreset(PresetMenu::title, label); }

    PrivateBus bus_;
    QProcessEnvironment environment_;
    VirtualScreen screen_;
    ScreenReader reader_;
    ThunarWindow thunar_{screen_, reader_};
    QString folder_;
    const QString inside_ = QStringLiteral("in %f $(id)");
};

} // namespace

TEST_F(ThunarOnScreenTest, APresetIsChosenOnAFolder)
{
    const QString label = QStringLiteral("it's \"a\" %f & _b_ $(id)");
    storePresets({QStringLiteral("Another"), label});
    ASSERT_NO_FATAL_FAILURE(open(helper()));
    ASSERT_NO_FATAL_FAILURE(thunar_.openMenuOfInside(inside_));
    ASSERT_NO_FATAL_FAILURE(choosePreset(label));
    expectCall(label, {(folder_ + u'/' + inside_).toUtf8()});
}

TEST_F(ThunarOnScreenTest, AfterAChangeOfThePresetsAnEntryStillCallsForWhatItSays)
{
    const QString label = QStringLiteral("Client Project");
    storePresets({QStringLiteral("Another"), label});
    ASSERT_NO_FATAL_FAILURE(open(helper()));
    storePresets({label, QStringLiteral("New"), QStringLiteral("Another")});
    ASSERT_TRUE(Registration::refresh(helper()));
    ASSERT_NO_FATAL_FAILURE(thunar_.openMenuOfInside(inside_));
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
    ASSERT_NO_FATAL_FAILURE(thunar_.openMenuOfBackground());
    ASSERT_NO_FATAL_FAILURE(choosePreset(label));
    const QFileInfo created(folder_ + QStringLiteral("/Letters"));
    const auto isCreated = [&created] {
        return QFileInfo(created.filePath()).permission(QFile::ReadGroup | QFile::ExeGroup);
    };
    EXPECT_TRUE(waitUntil(isCreated));
    EXPECT_TRUE(QFileInfo(created.filePath()).isDir());
}
