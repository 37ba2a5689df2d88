// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Drags with the mouse between programs that know nothing of each other, on a screen of their own.

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/FileContent.h"
#include "Tests/Session/TemporaryHome.h"
#include "Tests/Session/VirtualScreen.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>
#include <gmock/gmock.h>

#include <csignal>
#include <memory>

using ::testing::ElementsAre;
using ::testing::StartsWith;

namespace {

class DraggingTest : public ::testing::Test
{
protected:
    /// The window with the table and the outline, at the left of the screen.
    void startSource(const QStringList &arguments = {})
    {
        source = start(QStringLiteral(QUENBY_DRAGGING), arguments);
        ASSERT_TRUE(waitUntil([this] { return !said(*source, "rows").isEmpty(); }));
        const QStringList rows = said(*source, "rows").constFirst().split(u' ');
        firstRow = rows.value(1).toInt();
        rowHeight = rows.value(2).toInt();
    }
    /// A window of another program, at the right of it.
    void startTarget(const QString &program, const QStringList &arguments)
    {
        QDir().mkpath(folder);
        target = start(program, QStringList{QStringLiteral("--at"), QStringLiteral("600,0")} + arguments);
        ASSERT_TRUE(waitUntil([this] { return !said(*target, "ready").isEmpty(); }));
    }
    std::unique_ptr<ChildProcess> start(const QString &program, const QStringList &arguments)
    {
        QProcessEnvironment environment = screen.environmentFrom(home.environment());
        QDir().mkpath(temporary);
        environment.insert(QStringLiteral("TMPDIR"), temporary);
        return std::make_unique<ChildProcess>(program, arguments, environment);
    }

    /// The lines that begin with \a word.
    static QStringList said(ChildProcess &program, const QByteArray &word)
    {
        QStringList lines;
        for (const QByteArray &line : program.output().split('\n')) {
            if (line == word || line.startsWith(word + ' '))
                lines.append(QString::fromUtf8(line));
        }
        return lines;
    }
    QString lastSaid(ChildProcess &program, const QByteArray &word)
    {
        const QStringList lines = said(program, word);
        return lines.isEmpty() ? QString() : lines.constLast();
    }

    static QByteArray lastLine(ChildProcess &program)
    {
        return program.output().trimmed().split('\n').constLast();
    }

    QPoint middleOfRow(int row) const { return {60, firstRow + row * rowHeight + rowHeight / 2}; }
    QPoint above(int row) const { return {60, firstRow + row * rowHeight + 1}; }
    bool dragRowToTarget(int row, const QByteArray &until = "enter")
    {
        return screen.drag(middleOfRow(row), middleOfTarget, [&] { return !said(*target, until).isEmpty(); });
    }
    /// Goes on with a drag that is somewhere else.
    bool dragOn(const QPoint &to, ChildProcess &program, const QByteArray &until)
    {
        return screen.dragOn(to, [&] { return lastLine(program) == until; });
    }
    bool isDone()
    {
        return waitUntil([this] { return !said(*target, "done").isEmpty(); });
    }
    /// The program lives, hears the mouse again, and ends as it is told to.
    void expectSourceIsWell()
    {
        EXPECT_TRUE(waitUntil([this] {
            screen.moveMouse({396, 4});
            screen.pressMouse();
            screen.releaseMouse();
            return !said(*source, "click").isEmpty();
        })) << source->errors().toStdString();
        EXPECT_TRUE(source->isRunning());
    }
    /// The data of the drag have gone, and with them the folder for the file that was promised.
    void expectNothingIsKept()
    {
        EXPECT_TRUE(waitUntil([this] { return !said(*source, "forgotten").isEmpty(); }));
        EXPECT_EQ(QDir(temporary).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }
    static constexpr QPoint middleOfTarget{700, 100};
    TemporaryHome home;
    VirtualScreen screen{home};
    QString folder = home.filePath(QStringLiteral("dropped here"));
    QString temporary = home.filePath(QStringLiteral("temporary"));
    std::unique_ptr<ChildProcess> source;
    std::unique_ptr<ChildProcess> target;
    int firstRow = 0;
    int rowHeight = 0;
};

TEST_F(DraggingTest, APromisedFileIsWrittenWhenItsUrlIsAskedForAtTheDrop)
{
    startSource();
    startTarget(QStringLiteral(QUENBY_DROP_TARGET), {QStringLiteral("--into"), folder});
    ASSERT_TRUE(dragRowToTarget(1));
    EXPECT_TRUE(said(*source, "promise").isEmpty());
    EXPECT_TRUE(lastSaid(*target, "enter").contains(QStringLiteral("text/uri-list")));
    // What it may do the target writes after the line that was waited for.
    EXPECT_TRUE(waitUntil([this] { return !said(*target, "may").isEmpty(); }));
    EXPECT_EQ(lastSaid(*target, "may"), QStringLiteral("may copy")) << "a link would lead nowhere in the end";
    screen.releaseMouse();
    ASSERT_TRUE(isDone());
    EXPECT_EQ(lastSaid(*target, "drop"), QStringLiteral("drop copy"));
    EXPECT_EQ(said(*source, "drag"), QStringList(QStringLiteral("drag beta")));
    ASSERT_EQ(said(*source, "promise").size(), 1);

    const QString path = lastSaid(*target, "url").section(u' ', 1, 1);
    EXPECT_TRUE(lastSaid(*target, "url").endsWith(QStringLiteral("/beta.txt present")));
    EXPECT_EQ(contentOf(folder + QStringLiteral("/beta.txt")), "beta");
    const QFileInfo privateFolder(lastSaid(*source, "promise").section(u' ', 2));
    EXPECT_EQ(privateFolder.permissions() & 0x0fff, QFile::ReadUser | QFile::WriteUser | QFile::ExeUser);
    expectSourceIsWell();
}

TEST_F(DraggingTest, WhoAsksEarlyIsToldWhereTheFileWillBeAtTheDrop)
{
    startSource();
    startTarget(QStringLiteral(QUENBY_DROP_TARGET),
                {QStringLiteral("--ask-early"), QStringLiteral("--into"), folder});
    ASSERT_TRUE(dragRowToTarget(1, "hover"));
    EXPECT_TRUE(lastSaid(*target, "hover").endsWith(QStringLiteral("/beta.txt absent")));
    EXPECT_TRUE(said(*source, "promise").isEmpty());
    screen.releaseMouse();
    ASSERT_TRUE(isDone());
    EXPECT_TRUE(lastSaid(*target, "url").endsWith(QStringLiteral("/beta.txt present")));
    EXPECT_EQ(said(*source, "promise").size(), 1);
    EXPECT_EQ(contentOf(folder + QStringLiteral("/beta.txt")), "beta");
}

TEST_F(DraggingTest, NothingIsWrittenWhenTheDragIsGivenUp)
{
    startSource();
    screen.ask(QStringLiteral("xdotool"), {QStringLiteral("windowfocus"), screen.windowOf(source->pid())});
    startTarget(QStringLiteral(QUENBY_DROP_TARGET), {QStringLiteral("--ask-early")});
    ASSERT_TRUE(dragRowToTarget(1, "hover"));
    // typeKey() would let go of the mouse.
    screen.ask(QStringLiteral("xdotool"), {QStringLiteral("key"), QStringLiteral("Escape")});
    ASSERT_TRUE(waitUntil([this] { return !said(*target, "leave").isEmpty(); }));
    screen.releaseMouse();
    expectSourceIsWell();
    expectNothingIsKept();
    EXPECT_TRUE(said(*source, "promise").isEmpty());
    EXPECT_TRUE(said(*target, "drop").isEmpty());
}

TEST_F(DraggingTest, NothingIsWrittenWhenTheDragEndsWhereNobodyTakesIt)
{
    startSource();
    startTarget(QStringLiteral(QUENBY_DROP_TARGET), {QStringLiteral("--ask-early")});
    ASSERT_TRUE(dragRowToTarget(1, "hover"));
    ASSERT_TRUE(dragOn({1000, 600}, *target, "leave"));
    screen.releaseMouse();
    expectSourceIsWell();
    expectNothingIsKept();
    EXPECT_TRUE(said(*source, "promise").isEmpty());
    EXPECT_TRUE(said(*target, "drop").isEmpty());
}

TEST_F(DraggingTest, ThePictureHangsAtThePointerWhereverTheRowIsTakenHoldOf)
{
    startSource();
    const QPoint end{500, 300};
    // The row's text is at its left.
    ASSERT_TRUE(
        screen.drag({190, middleOfRow(1).y()}, end, [&] { return !said(*source, "drag").isEmpty(); }));
    QRect picture;
    EXPECT_TRUE(waitUntil([&] {
        for (const QString &window : screen.windowsOf(source->pid())) {
            if (const QRect place = screen.placeOf(window); place.height() <= 2 * rowHeight)
                picture = place;
        }
        return picture.adjusted(-2, -2, 2, 2).contains(end);
    })) << picture.x()
        << ' ' << picture.y() << ' ' << picture.width() << ' ' << picture.height();
    screen.releaseMouse();
    expectSourceIsWell();
}

TEST_F(DraggingTest, AFileIsSavedDirectlyWhereTheOtherProgramWantsIt)
{
    startSource();
    startTarget(QStringLiteral(QUENBY_DIRECT_SAVE_TARGET),
                {QStringLiteral("--url"), QStringLiteral("file://") + home.path() + QStringLiteral("/{}")});
    ASSERT_TRUE(dragRowToTarget(2));
    EXPECT_TRUE(lastSaid(*target, "enter").contains(QStringLiteral("XdndDirectSave0")));
    EXPECT_TRUE(said(*source, "promise").isEmpty());
    screen.releaseMouse();
    ASSERT_TRUE(isDone());
    EXPECT_EQ(lastSaid(*target, "name"), QStringLiteral("name gamma.txt"));
    EXPECT_EQ(lastSaid(*target, "answer"), QStringLiteral("answer S"));
    EXPECT_EQ(contentOf(home.filePath(QStringLiteral("gamma.txt"))), "gamma");
    EXPECT_EQ(said(*source, "promise").size(), 1);
    expectSourceIsWell();
}

TEST_F(DraggingTest, TheOtherProgramChoosesTheNameOfAFileSavedDirectly)
{
    const QString chosen = home.filePath(QStringLiteral("beta 2.txt"));
    QFile existing(chosen);
    ASSERT_TRUE(existing.open(QIODevice::WriteOnly) && existing.write("to be replaced") > 0);
    existing.close();
    startSource();
    startTarget(QStringLiteral(QUENBY_DIRECT_SAVE_TARGET),
                {QStringLiteral("--url"), QStringLiteral("file://") + QSysInfo::machineHostName() +
                                              home.path() + QStringLiteral("/beta%202.txt")});
    ASSERT_TRUE(dragRowToTarget(1));
    screen.releaseMouse();
    ASSERT_TRUE(isDone());
    EXPECT_EQ(lastSaid(*target, "answer"), QStringLiteral("answer S"));
    EXPECT_EQ(contentOf(chosen), "beta");
    EXPECT_FALSE(QFile::exists(home.filePath(QStringLiteral("beta.txt"))));
}

TEST_F(DraggingTest, WhereTheSourceCannotSaveItOffersTheFileInstead)
{
    startSource();
    startTarget(QStringLiteral(QUENBY_DIRECT_SAVE_TARGET),
                {QStringLiteral("--url"), QStringLiteral("file://elsewhere.example/tmp/{}")});
    ASSERT_TRUE(dragRowToTarget(0));
    screen.releaseMouse();
    ASSERT_TRUE(isDone());
    EXPECT_EQ(lastSaid(*target, "answer"), QStringLiteral("answer F"));
    const QString path = lastSaid(*target, "list").mid(QStringLiteral("list file://").size());
    EXPECT_EQ(contentOf(path), "alpha");
    EXPECT_EQ(said(*source, "promise").size(), 1);
}

TEST_F(DraggingTest, AFailureToSaveDirectlyIsReported)
{
    startSource();
    startTarget(
        QStringLiteral(QUENBY_DIRECT_SAVE_TARGET),
        {QStringLiteral("--url"), QStringLiteral("file://") + home.path() + QStringLiteral("/none/{}")});
    ASSERT_TRUE(dragRowToTarget(0));
    screen.releaseMouse();
    ASSERT_TRUE(isDone());
    EXPECT_EQ(lastSaid(*target, "answer"), QStringLiteral("answer E"));
    EXPECT_TRUE(source->errors().contains("cannot write"));
    expectSourceIsWell();
}

TEST_F(DraggingTest, RowsAreMovedWithinTheTableWithoutAFile)
{
    startSource();
    startTarget(QStringLiteral(QUENBY_DROP_TARGET), {QStringLiteral("--ask-early")});
    // Over another program first, which asks.
    ASSERT_TRUE(dragRowToTarget(0, "hover"));
    ASSERT_TRUE(dragOn(above(2), *source, "allow above 2 4294967295"));
    screen.releaseMouse();
    ASSERT_TRUE(waitUntil([this] { return !said(*source, "move").isEmpty(); }));
    EXPECT_EQ(lastSaid(*source, "move"), QStringLiteral("move alpha 2"));
    expectSourceIsWell();
    EXPECT_TRUE(said(*source, "promise").isEmpty());
    EXPECT_TRUE(said(*target, "drop").isEmpty());
}

TEST_F(DraggingTest, ARefusedDropDoesNothing)
{
    startSource();
    ASSERT_TRUE(
        screen.drag(middleOfRow(0), middleOfRow(2), [this] { return lastLine(*source) == "refuse on 2"; }));
    screen.releaseMouse();
    expectSourceIsWell();
    EXPECT_TRUE(said(*source, "move").isEmpty());
    EXPECT_TRUE(said(*source, "promise").isEmpty());
}

TEST_F(DraggingTest, FilesOfAnotherProgramAreDroppedAndStayThere)
{
    startSource();
    startTarget(QStringLiteral(QUENBY_DROP_TARGET),
                {QStringLiteral("--offer"), QStringLiteral("/tmp/a b.txt"), QStringLiteral("--offer"),
                 QStringLiteral("/tmp/c.txt")});
    ASSERT_TRUE(
        screen.drag(middleOfTarget, above(1), [this] { return !said(*source, "allow above 1").isEmpty(); }));
    screen.releaseMouse();
    ASSERT_TRUE(waitUntil([this] { return !said(*source, "import").isEmpty(); }));
    EXPECT_EQ(lastSaid(*source, "import"), QStringLiteral("import 1 /tmp/a b.txt /tmp/c.txt"));
    ASSERT_TRUE(waitUntil([this] { return !said(*target, "offered").isEmpty(); }));
    EXPECT_EQ(lastSaid(*target, "offered"), QStringLiteral("offered copy"));
}

TEST_F(DraggingTest, ItemsAreMovedWithinTheOutline)
{
    startSource();
    const QPoint item(QPoint(280, middleOfRow(1).y()));
    ASSERT_TRUE(screen.drag(item, QPoint(280, 180), [this] { return !said(*source, "drag b").isEmpty(); }));
    screen.releaseMouse();
    ASSERT_TRUE(waitUntil([this] { return !said(*source, "place").isEmpty(); }));
    EXPECT_EQ(lastSaid(*source, "place"), QStringLiteral("place b - 2"));
    expectSourceIsWell();
}

/// Something happens to the table, or what it shows, while a row of it is being dragged.
class DraggingMeanwhileTest : public DraggingTest, public ::testing::WithParamInterface<const char *>
{
};

TEST_P(DraggingMeanwhileTest, TheDragEndsWithoutHarm)
{
    startSource({QStringLiteral("--meanwhile"), QString::fromLatin1(GetParam())});
    startTarget(QStringLiteral(QUENBY_DROP_TARGET), {});
    const auto hasHappened = [this] { return !said(*source, "meanwhile").isEmpty(); };
    ASSERT_TRUE(screen.drag(middleOfRow(1), middleOfTarget, hasHappened));
    screen.releaseMouse();
    expectSourceIsWell();
    EXPECT_TRUE(said(*source, "promise").isEmpty());
    EXPECT_TRUE(said(*target, "copied").isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Meanwhile, DraggingMeanwhileTest, ::testing::Values("destroy", "remove", "orphan"));

TEST_P(DraggingMeanwhileTest, ADropInTheTableIsNothing)
{
    startSource({QStringLiteral("--meanwhile"), QString::fromLatin1(GetParam())});
    const auto hasHappened = [this] { return !said(*source, "meanwhile").isEmpty(); };
    ASSERT_TRUE(screen.drag(middleOfRow(1), middleOfRow(0), hasHappened));
    screen.releaseMouse();
    expectSourceIsWell();
    EXPECT_TRUE(said(*source, "move").isEmpty());
}

} // namespace
