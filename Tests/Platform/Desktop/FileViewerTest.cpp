// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/FileViewer.h"

#include "Platform/Bus/SessionBus.h"
#include "TestLauncher.h"
#include "Tests/Session/PrivateBus.h"
#include "Tests/Session/SilentSocket.h"
#include "Tests/Session/TestApplication.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

const QString connectionName = QStringLiteral("fake-file-manager");

/// A file manager that writes down what it is told to show.
class FakeFileManager final : public QDBusVirtualObject
{
public:
    enum class Manner { Helpful, Refusing, Silent };

    FakeFileManager(const PrivateBus &bus, Manner manner)
        : manner_(manner)
    {
        QDBusConnection connection = QDBusConnection::connectToBus(bus.address(), connectionName);
        EXPECT_TRUE(connection.registerVirtualObject(QStringLiteral("/org/freedesktop/FileManager1"), this));
        EXPECT_TRUE(connection.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    }
    ~FakeFileManager() override { QDBusConnection::disconnectFromBus(connectionName); }

    QStringList calls() const { return calls_; }

private:
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        const QList<QVariant> arguments = message.arguments();
        calls_ << QStringLiteral("%1.%2(%3) %4 '%5'")
                      .arg(message.interface(), message.member(), message.signature(),
                           arguments.value(0).toStringList().join(u' '), arguments.value(1).toString());
        if (manner_ == Manner::Helpful)
            connection.send(message.createReply());
        if (manner_ == Manner::Refusing)
            connection.send(message.createErrorReply(QDBusError::Failed, QStringLiteral("no")));
        return true;
    }
    QString introspect(const QString &) const override { return {}; }

    Manner manner_;
    QStringList calls_;
};

class FileViewerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        launcher.install();
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    QString path() const { return folder.filePath(QStringLiteral("a & b #1.txt")); }
    QByteArray openedFolder() const { return "[file://" + folder.path().toUtf8() + "]"; }

    /// Asks \a viewer to show the file, and expects no more than a moment to pass.
    void expectSelectedAtOnce(FileViewer &viewer)
    {
        constexpr qint64 moment = 5000;
        QElapsedTimer time;
        time.start();
        EXPECT_TRUE(viewer.selectFile(path()));
        EXPECT_LT(time.elapsed(), moment);
    }

    TestLauncher launcher;
    const QTemporaryDir folder;
};

TEST_F(FileViewerTest, TheFileManagerIsToldToShowTheItem)
{
    const PrivateBus bus;
    const FakeFileManager manager(bus, FakeFileManager::Manner::Helpful);
    FileViewer viewer(std::make_shared<SessionBus>(bus.address()));
    expectSelectedAtOnce(viewer);
    ASSERT_TRUE(waitUntil([&manager] { return !manager.calls().isEmpty(); }));
    EXPECT_EQ(manager.calls().constFirst(),
              QStringLiteral("org.freedesktop.FileManager1.ShowItems(ass) file://%1/a%20&%20b%20%231.txt ''")
                  .arg(folder.path()));
    EXPECT_TRUE(viewer.selectFile(folder.path()));
    ASSERT_TRUE(waitUntil([&manager] { return manager.calls().size() == 2; }));
    EXPECT_FALSE(launcher.wasStarted());
}

TEST_F(FileViewerTest, WithoutAFileManagerOnTheBusTheFolderIsOpened)
{
    const PrivateBus bus;
    FileViewer viewer(std::make_shared<SessionBus>(bus.address()));
    expectSelectedAtOnce(viewer);
    EXPECT_EQ(launcher.launched(), openedFolder());
}

TEST_F(FileViewerTest, AFolderIsOpenedItself)
{
    FileViewer viewer(std::make_shared<SessionBus>(BusProbe::noBusAddress));
    EXPECT_TRUE(viewer.selectFile(folder.path()));
    EXPECT_EQ(launcher.launched(), openedFolder());
}

TEST_F(FileViewerTest, AnApplicationIsShownAndNeverStarted)
{
    const TestApplication application(folder.filePath(QStringLiteral("Shown.app")));
    FileViewer viewer(std::make_shared<SessionBus>(BusProbe::noBusAddress));
    EXPECT_TRUE(viewer.selectFile(application.path()));
    EXPECT_EQ(launcher.launched(), "[file://" + application.path().toUtf8() + "]");
    EXPECT_FALSE(application.wasStarted());
}

TEST_F(FileViewerTest, WithoutABusTheFolderIsOpened)
{
    FileViewer viewer(std::make_shared<SessionBus>(BusProbe::noBusAddress));
    expectSelectedAtOnce(viewer);
    EXPECT_EQ(launcher.launched(), openedFolder());
}

TEST_F(FileViewerTest, WithADeadBusTheFolderIsOpened)
{
    PrivateBus bus;
    bus.kill();
    FileViewer viewer(std::make_shared<SessionBus>(bus.address()));
    expectSelectedAtOnce(viewer);
    EXPECT_EQ(launcher.launched(), openedFolder());
}

TEST_F(FileViewerTest, WithASilentBusTheFolderIsOpened)
{
    const SilentSocket bus;
    FileViewer viewer(std::make_shared<SessionBus>(bus.busAddress()));
    expectSelectedAtOnce(viewer);
    EXPECT_EQ(launcher.launched(), openedFolder());
}

TEST_F(FileViewerTest, WhenTheFileManagerRefusesTheFolderIsOpened)
{
    const PrivateBus bus;
    const FakeFileManager manager(bus, FakeFileManager::Manner::Refusing);
    FileViewer viewer(std::make_shared<SessionBus>(bus.address()));
    expectSelectedAtOnce(viewer);
    EXPECT_EQ(launcher.launched(), openedFolder());
}

TEST_F(FileViewerTest, WhenTheFileManagerSaysNothingTheFolderIsOpened)
{
    const PrivateBus bus;
    const FakeFileManager manager(bus, FakeFileManager::Manner::Silent);
    FileViewer viewer(std::make_shared<SessionBus>(bus.address()), 300ms);
    expectSelectedAtOnce(viewer);
    EXPECT_EQ(launcher.launched(), openedFolder());
    EXPECT_EQ(manager.calls().size(), 1);
}

TEST_F(FileViewerTest, WhenTheBusDiesBeforeTheAnswerTheFolderIsOpened)
{
    PrivateBus bus;
    const FakeFileManager manager(bus, FakeFileManager::Manner::Silent);
    FileViewer viewer(std::make_shared<SessionBus>(bus.address()));
    expectSelectedAtOnce(viewer);
    ASSERT_TRUE(waitUntil([&manager] { return !manager.calls().isEmpty(); }));
    bus.kill();
    EXPECT_EQ(launcher.launched(), openedFolder());
}

TEST_F(FileViewerTest, ABusThatComesBackIsUsedAgain)
{
    PrivateBus bus;
    bus.kill();
    FileViewer viewer(std::make_shared<SessionBus>(bus.address()));
    expectSelectedAtOnce(viewer);
    ASSERT_EQ(launcher.launched(), openedFolder());
    bus.start();
    const FakeFileManager manager(bus, FakeFileManager::Manner::Helpful);
    expectSelectedAtOnce(viewer);
    EXPECT_TRUE(waitUntil([&manager] { return manager.calls().size() == 1; }));
}

TEST_F(FileViewerTest, LeavesASilentFileManagerBehind)
{
    const PrivateBus bus;
    const FakeFileManager manager(bus, FakeFileManager::Manner::Silent);
    QElapsedTimer time;
    {
        FileViewer viewer(std::make_shared<SessionBus>(bus.address()));
        expectSelectedAtOnce(viewer);
        ASSERT_TRUE(waitUntil([&manager] { return !manager.calls().isEmpty(); }));
        time.start();
    }
    EXPECT_LT(time.elapsed(), 5000);
}

TEST_F(FileViewerTest, NothingIsShownThatIsNotThere)
{
    const PrivateBus bus;
    FakeFileManager manager(bus, FakeFileManager::Manner::Helpful);
    FileViewer viewer(std::make_shared<SessionBus>(bus.address()));
    EXPECT_FALSE(viewer.selectFile(folder.filePath(QStringLiteral("missing"))));
    EXPECT_FALSE(viewer.selectFile({}));
    EXPECT_TRUE(viewer.selectFile(path()));
    ASSERT_TRUE(waitUntil([&manager] { return !manager.calls().isEmpty(); }));
    EXPECT_EQ(manager.calls().size(), 1);
}

} // namespace
