// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Starts of the program while it runs, and the files that it is given.

#include "Hosting/InstanceGuard.h"
#include "Tests/Host/HostProgramFixture.h"
#include "Tests/Hosting/TestBundle.h"
#include "Tests/Session/ChildProcess.h"

#include <QDir>
#include <QFile>

#include <csignal>
#include <gmock/gmock.h>
#include <unistd.h>

using ::testing::HasSubstr;

namespace {

class LaterStartsTest : public HostProgramFixture
{
protected:
    /// Whether \a first, which cannot show \a pane, has come so far that it takes requests. It then has tried
    /// twice, the second time because it was asked to.
    bool waitUntilItTakesRequests(ChildProcess &first, const QString &pane) const
    {
        const auto hasSaid = [&](int times) {
            return waitUntil([&] { return first.errors().count("is missing") >= times; });
        };
        InstanceGuard later(home_.configFolder(), home_.runtimeFolder());
        return hasSaid(1) &&
               later.begin({pane, {}}, std::chrono::seconds(10)) == InstanceGuard::Outcome::Handed &&
               hasSaid(2);
    }
};

} // namespace

TEST_F(LaterStartsTest, ASecondStartRaisesTheFirstAndEnds)
{
    ChildProcess first(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("didSelect"));
    ChildProcess second(program(), {}, environment_);
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_TRUE(second.hasReturned(0));
    EXPECT_TRUE(first.isRunning());
    EXPECT_EQ(record(), "created\nloadMainView\nmainViewDidLoad\ndidSelect\n");
}

TEST_F(LaterStartsTest, ASecondStartMayAskForAnotherPane)
{
    const QString other = home_.filePath(QStringLiteral("Other.prefPane"));
    TestBundle::make(other, TestBundle::recordingPane());
    ChildProcess first(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("didSelect"));
    ChildProcess second(program(), {other}, environment_);
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_TRUE(second.hasReturned(0));
    EXPECT_TRUE(waitUntil([&] {
        return record().endsWith("view destroyed\ncreated\nloadMainView\nmainViewDidLoad\n"
                                 "didSelect\n");
    })) << record().constData();
}

TEST_F(LaterStartsTest, FilesGoToThePaneAlsoByASecondStart)
{
    for (const char *name : {"one.qnbp", "two.qnbp"}) {
        QFile file(home_.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    const QString one = home_.filePath(QStringLiteral("one.qnbp"));
    const QString two = home_.filePath(QStringLiteral("two.qnbp"));
    ChildProcess first(program(), {one, two}, environment_);
    ASSERT_TRUE(waitForRecord("openFiles " + one.toUtf8() + ' ' + two.toUtf8())) << record().constData();
    ChildProcess second(program(), {two}, environment_);
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_TRUE(second.hasReturned(0));
    EXPECT_TRUE(waitForRecord("openFiles " + two.toUtf8())) << record().constData();
    EXPECT_EQ(record().count("created"), 1);
}

TEST_F(LaterStartsTest, AFileThatCannotBeReadGoesToThePaneAsWell)
{
    const QString gone = home_.filePath(QStringLiteral("gone.qnbp"));
    // The library has no text for such a name: it shows a sign in place of the byte.
    const QString noText = home_.filePath(QStringLiteral("no text \uFFFD.qnbp"));
    const QStringList script{QStringLiteral("-c"),
                             QStringLiteral("f=$(printf '%s/no text \\377.qnbp' \"$2\"); : >\"$f\"; "
                                            "exec \"$1\" \"$f\" \"$2/gone.qnbp\""),
                             QStringLiteral("sh"), program(), home_.path()};
    const QByteArray both = "openFiles " + noText.toUtf8() + ' ' + gone.toUtf8();

    const ChildProcess first(QStringLiteral("/bin/sh"), script, environment_);
    ASSERT_TRUE(waitForRecord(both)) << record().constData();
    QFile::remove(recordPath());
    ChildProcess second(QStringLiteral("/bin/sh"), script, environment_);
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_TRUE(second.hasReturned(0)) << second.errors().constData();
    EXPECT_TRUE(waitForRecord(both)) << record().constData();
    EXPECT_EQ(record(), both + '\n') << "the pane has not been left";
    EXPECT_EQ(::unlink((home_.path().toUtf8() + "/no text \377.qnbp").constData()), 0)
        << "as nobody else can";
}

TEST_F(LaterStartsTest, APaneIsNotLeftForWhatIsNone)
{
    const QString gone = home_.filePath(QStringLiteral("Gone.prefPane"));
    ChildProcess first(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("didSelect"));
    QFile::remove(recordPath());
    const auto isRefused = [&](const QString &argument, const std::string &reason) {
        ChildProcess second(program(), {argument}, environment_);
        ASSERT_TRUE(second.waitForEnd());
        EXPECT_TRUE(second.hasReturned(1));
        EXPECT_THAT(second.errors().toStdString(), HasSubstr(reason));
    };
    isRefused(gone, "There is no settings pane at " + gone.toStdString());
    isRefused(home_.path(), home_.path().toStdString() + " is no settings pane");
    // What comes after it has been taken when this has.
    const QString file = home_.filePath(QStringLiteral("one.qnbp"));
    ChildProcess third(program(), {file}, environment_);
    ASSERT_TRUE(waitForRecord("openFiles " + file.toUtf8()));
    EXPECT_EQ(record(), "openFiles " + file.toUtf8() + '\n');
}

TEST_F(LaterStartsTest, FilesThatComeToAPageWithoutAPaneHaveItTriedAgain)
{
    ASSERT_TRUE(QDir(panePath()).removeRecursively());
    TestBundle::make(panePath(), {});
    ChildProcess first(program(), {}, environment_);
    ASSERT_TRUE(waitUntilItTakesRequests(first, panePath())) << first.errors().constData();
    ASSERT_TRUE(QDir(panePath()).removeRecursively());
    TestBundle::make(panePath(), TestBundle::recordingPane());
    const QString file = home_.filePath(QStringLiteral("one.qnbp"));
    ChildProcess second(program(), {file}, environment_);
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_TRUE(second.hasReturned(0));
    EXPECT_TRUE(waitForRecord("openFiles " + file.toUtf8())) << record().constData();
    EXPECT_EQ(record().count("created"), 1);
}

TEST_F(LaterStartsTest, APageWithoutAPaneIsNotLeftForAnotherPaneThanTheOneAskedFor)
{
    const QString broken = home_.filePath(QStringLiteral("Broken.prefPane"));
    TestBundle::make(broken, {});
    const QString other = home_.filePath(QStringLiteral("Other.prefPane"));
    TestBundle::make(other, TestBundle::recordingPane());
    ChildProcess first(program(), {broken}, environment_);
    ASSERT_TRUE(waitUntilItTakesRequests(first, broken)) << first.errors().constData();
    const QString gone = home_.filePath(QStringLiteral("Gone.prefPane"));
    ChildProcess second(program(), {gone}, environment_);
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_TRUE(second.hasReturned(1));
    // What comes after it has been taken when this has.
    const QString file = home_.filePath(QStringLiteral("one.qnbp"));
    ChildProcess third(program(), {other, file}, environment_);
    ASSERT_TRUE(waitForRecord("openFiles " + file.toUtf8()));
    EXPECT_EQ(record().count("created"), 1) << record().constData();
}

TEST_F(LaterStartsTest, FilesWaitForTheAnswerToAQuestion)
{
    QFile file(home_.filePath(QStringLiteral("one.qnbp")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    setBehaviour(QStringLiteral("ask for a while"));
    ChildProcess host(program(), {file.fileName()}, environment_);
    ASSERT_TRUE(waitForRecord("openFiles " + file.fileName().toUtf8()));
    const QByteArray calls = record();
    EXPECT_GE(calls.indexOf("asked\n"), 0) << calls.constData();
    EXPECT_LT(calls.indexOf("asked\n"), calls.indexOf("openFiles")) << calls.constData();
}

TEST_F(LaterStartsTest, ASecondStartDuringTheStartOfTheFirstWaitsForIt)
{
    setBehaviour(QStringLiteral("start slowly"));
    ChildProcess first(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("loadMainView"));
    ChildProcess second(program(), {}, environment_);
    ASSERT_TRUE(waitUntil([&] { return catches(second.pid(), SIGTERM); }));
    QFile goOn(goOnPath());
    ASSERT_TRUE(goOn.open(QIODevice::WriteOnly));
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_TRUE(second.hasReturned(0));
    EXPECT_TRUE(first.isRunning());
    EXPECT_EQ(record().count("created"), 1);
}

TEST_F(LaterStartsTest, ASecondStartSaysWhenTheFirstDoesNotAnswer)
{
    ChildProcess first(program(), {}, environment_);
    ASSERT_TRUE(waitForRecord("didSelect"));
    first.signal(SIGSTOP);
    environment_.insert(QStringLiteral("QUENBY_REPORT_FIRST_PAINT"), QStringLiteral("1"));
    ChildProcess second(program(), {}, environment_);
    ASSERT_TRUE(second.waitForEnd());
    EXPECT_TRUE(second.errors().contains("first-paint-ns: "));
    EXPECT_EQ(record().count("created"), 1);
    first.signal(SIGCONT);
}
