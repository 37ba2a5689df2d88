// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/PaneLoader.h"

#include "Hosting/PaneSession.h"
#include "Tests/Hosting/TestBundle.h"

#include <QAccessible>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class PaneLoaderTest : public ::testing::Test
{
protected:
    PaneLoaderTest()
    {
        qputenv("QUENBY_TEST_RECORD", recordPath().toUtf8());
        qunsetenv("QUENBY_TEST_BEHAVIOUR");
    }
    ~PaneLoaderTest() override
    {
        qunsetenv("QUENBY_TEST_RECORD");
        qunsetenv("QUENBY_TEST_BEHAVIOUR");
    }

    QString recordPath() const { return folder_.filePath(QStringLiteral("record")); }
    QString bundlePath() const { return folder_.filePath(QStringLiteral("Test.prefPane")); }
    QByteArray record() const
    {
        QFile file(recordPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// What the page says that is shown for the bundle; empty if it is the pane's own view.
    QString reason() const
    {
        const PaneSession session(PaneLoader::load(bundlePath()));
        const auto *const label = session.view()->findChild<QLabel *>(QStringLiteral("errorReason"));
        return label ? label->text() : QString();
    }

    const QTemporaryDir folder_;
};

} // namespace

TEST_F(PaneLoaderTest, LoadsAPane)
{
    TestBundle::make(bundlePath(), TestBundle::recordingPane());
    EXPECT_TRUE(reason().isEmpty()) << qPrintable(reason());
    EXPECT_TRUE(record().startsWith("created\nloadMainView\nmainViewDidLoad\ndestroyed\nview destroyed\n"))
        << record().constData();
}

TEST_F(PaneLoaderTest, SaysThatTheBundleIsMissing)
{
    EXPECT_EQ(reason(), QStringLiteral("There is no settings pane at %1.").arg(bundlePath()));
}

TEST_F(PaneLoaderTest, SaysThatTheInformationFileIsMissing)
{
    ASSERT_TRUE(QDir().mkpath(bundlePath() + QStringLiteral("/Contents/MacOS")));
    EXPECT_EQ(
        reason(),
        QStringLiteral("%1 is no settings pane: it has no readable Contents/Info.plist.").arg(bundlePath()));
}

TEST_F(PaneLoaderTest, SaysThatTheInformationFileIsDamaged)
{
    TestBundle::writeInformation(bundlePath(), "<plist><dict>");
    EXPECT_EQ(reason(), QStringLiteral("Contents/Info.plist of %1 is damaged.").arg(bundlePath()));
}

TEST_F(PaneLoaderTest, SaysThatTheInformationNamesNoExecutable)
{
    TestBundle::writeInformation(bundlePath(), "<plist><dict><key>CFBundleName</key><string>x</string>"
                                               "</dict></plist>");
    EXPECT_EQ(reason(), QStringLiteral("Contents/Info.plist of %1 names no executable.").arg(bundlePath()));
}

TEST_F(PaneLoaderTest, SaysThatTheExecutableIsMissing)
{
    TestBundle::make(bundlePath(), {});
    EXPECT_EQ(reason(),
              QStringLiteral("The executable of %1 is missing: Contents/MacOS/Pane.so.").arg(bundlePath()));
}

TEST_F(PaneLoaderTest, SaysThatTheCodeIsOfAnotherKindWithoutRunningIt)
{
    TestBundle::make(bundlePath(), TestBundle::foreignPlugin());
    EXPECT_TRUE(reason().contains(QStringLiteral("org.quenby.test.SomethingElse/7"))) << qPrintable(reason());
    EXPECT_TRUE(reason().contains(QStringLiteral(QUENBY_PREFERENCE_PANE_IID)));
    EXPECT_EQ(record(), QByteArray());
}

TEST_F(PaneLoaderTest, SaysWhyTheCodeCannotBeLoaded)
{
    TestBundle::make(bundlePath(), {});
    QFile code(bundlePath() + QStringLiteral("/Contents/MacOS/Pane.so"));
    ASSERT_TRUE(code.open(QIODevice::WriteOnly));
    code.write("no code at all");
    code.close();
    EXPECT_TRUE(reason().startsWith(QStringLiteral("The code of %1 cannot be loaded: ").arg(bundlePath())))
        << qPrintable(reason());
}

TEST_F(PaneLoaderTest, SaysThatTheCodeMakesNoPane)
{
    TestBundle::make(bundlePath(), TestBundle::recordingPane());
    qputenv("QUENBY_TEST_BEHAVIOUR", "make no pane");
    EXPECT_EQ(reason(), QStringLiteral("The code of %1 makes no pane.").arg(bundlePath()));
}

TEST_F(PaneLoaderTest, SaysThatThePaneMakesNoView)
{
    TestBundle::make(bundlePath(), TestBundle::recordingPane());
    qputenv("QUENBY_TEST_BEHAVIOUR", "make no view");
    EXPECT_EQ(reason(), QStringLiteral("The pane could not make its view."));
    EXPECT_EQ(record(), "created\nloadMainView\ndestroyed\n");
}

TEST_F(PaneLoaderTest, TheReasonCanBeSelectedReachedByKeysAndReadAloud)
{
    const PaneSession session(PaneLoader::load(bundlePath()));
    auto *const label = session.view()->findChild<QLabel *>(QStringLiteral("errorReason"));
    ASSERT_TRUE(label);
    EXPECT_TRUE(label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
    EXPECT_TRUE(label->textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
    EXPECT_TRUE(label->focusPolicy() & Qt::TabFocus);
    QAccessibleInterface *const accessible = QAccessible::queryAccessibleInterface(label);
    ASSERT_TRUE(accessible);
    EXPECT_EQ(accessible->text(QAccessible::Name), label->text());
}

TEST_F(PaneLoaderTest, ATitleIsTheBundlesOrItsNameOnDisk)
{
    EXPECT_EQ(PaneLoader::titleOf(bundlePath()), QStringLiteral("Test"));
    TestBundle::make(bundlePath(), {}, QStringLiteral("Things &amp; Ünïcode"));
    EXPECT_EQ(PaneLoader::titleOf(bundlePath()), QStringLiteral("Things & Ünïcode"));
}

TEST_F(PaneLoaderTest, AnIconIsTheOneTheInformationNames)
{
    EXPECT_TRUE(PaneLoader::iconPathOf(bundlePath()).isEmpty());
    TestBundle::writeInformation(bundlePath(), "<plist><dict><key>CFBundleIconFile</key>"
                                               "<string>icons/pane.svg</string></dict></plist>");
    EXPECT_TRUE(PaneLoader::iconPathOf(bundlePath()).isEmpty());
    const QString path = bundlePath() + QStringLiteral("/Contents/Resources/icons/pane.svg");
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile icon(path);
    ASSERT_TRUE(icon.open(QIODevice::WriteOnly));
    EXPECT_EQ(PaneLoader::iconPathOf(bundlePath()), path);
}
