// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/InstanceGuard.h"

#include "Tests/Session/AsyncResult.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <future>
#include <gtest/gtest.h>
#include <optional>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Outcome = InstanceGuard::Outcome;
using Request = InstanceGuard::Request;

namespace {

const QString configuration = QStringLiteral("/home/someone/.config");

/// The side of a socket that another version has.
class FirstVersionSocket
{
public:
    FirstVersionSocket()
    {
        // Nobody waits for ever for a side that does not answer.
        const timeval patience = {10, 0};
        ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        ::setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    ~FirstVersionSocket() { ::close(descriptor); }
    FirstVersionSocket(const FirstVersionSocket &) = delete;
    FirstVersionSocket &operator=(const FirstVersionSocket &) = delete;

    bool connectTo(const QString &path) const
    {
        const sockaddr_un address = addressOf(path);
        return ::connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    }
    bool listenAt(const QString &path) const
    {
        const sockaddr_un address = addressOf(path);
        return ::bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 &&
               ::listen(descriptor, 1) == 0;
    }
    /// Answers the next packet, on a connection of its own, with \a answer. Whether one came.
    bool answerOne(char answer) const
    {
        const int connection = ::accept(descriptor, nullptr, nullptr);
        char packet[1024];
        const bool isAnswered = connection >= 0 && ::recv(connection, packet, sizeof packet, 0) > 0 &&
                                ::send(connection, &answer, 1, MSG_NOSIGNAL) == 1;
        if (connection >= 0)
            ::close(connection);
        return isAnswered;
    }

    template <class... Fields>
    bool send(const Fields &...fields) const
    {
        QByteArray packet;
        QDataStream stream(&packet, QIODevice::WriteOnly);
        (stream << ... << fields);
        return ::send(descriptor, packet.constData(), size_t(packet.size()), MSG_NOSIGNAL) == packet.size();
    }

    const int descriptor = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);

private:
    static sockaddr_un addressOf(const QString &path)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        const QByteArray bytes = path.toUtf8();
        std::copy_n(bytes.constData(), std::min(bytes.size(), qsizetype(sizeof address.sun_path - 1)),
                    address.sun_path);
        return address;
    }
};

class InstanceGuardTest : public ::testing::Test
{
protected:
    InstanceGuardTest()
        : first_(std::in_place, configuration, folder_.path())
        , second_(configuration, folder_.path())
    {
    }

    /// Another process's attempt: waits, so it needs a thread of its own here.
    std::future<Outcome> beginSecond(const Request &request, std::chrono::milliseconds timeout = 10s)
    {
        return std::async(std::launch::async, [=, this] { return second_.begin(request, timeout); });
    }

    QString socketPath() const
    {
        return folder_.filePath(
            QDir(folder_.path()).entryList({QStringLiteral("*.socket")}, QDir::System).value(0));
    }

    /// The first one notes what it is asked for, by \a start among others.
    void handleAndConnect(const FirstVersionSocket &start)
    {
        ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
        first_->handleWith([this](const Request &request) { requests_.append(request); });
        ASSERT_TRUE(start.connectTo(socketPath()));
    }
    /// How many files arrive at once of one that sends \a count packets with a file each and never says that
    /// it was the last, and after each does nothing for \a pause.
    qsizetype filesHeardAtOnce(int count, std::chrono::milliseconds pause)
    {
        const FirstVersionSocket start;
        handleAndConnect(start);
        std::promise<void> heard;
        const auto packets = std::async(std::launch::async, [&, isHeard = heard.get_future()] {
            for (int number = 0;
                 number < count && isHeard.wait_for(pause) == std::future_status::timeout &&
                 start.send(QString(), QByteArray(), QStringList(QStringLiteral("/a.qnbp")), true);
                 ++number) {
            }
        });
        EXPECT_TRUE(waitUntil([&] { return !requests_.isEmpty(); }));
        heard.set_value();
        return requests_.value(0).files.size();
    }

    /// The first holds the lock, and \a window is what answers.
    void answerInsteadOfTheFirst(const FirstVersionSocket &window)
    {
        ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
        const QString path = socketPath();
        first_->close();
        ASSERT_TRUE(window.listenAt(path));
    }
    /// Files of which two fit into a packet each, and not into one.
    static QStringList packetsOfOneFile(int count) { return QStringList(count, u'/' + QString(32764, u'n')); }
    /// How many of \a count parts of a request \a window takes, after each of which it is busy for \a pause.
    static int partsTaken(const FirstVersionSocket &window, int count, std::chrono::milliseconds pause)
    {
        int number = 0;
        for (; number < count && window.answerOne('f'); ++number)
            waitUntil([] { return false; }, pause);
        return number;
    }

    const QTemporaryDir folder_;
    QList<Request> requests_;
    std::optional<InstanceGuard> first_;
    InstanceGuard second_;
};

} // namespace

TEST_F(InstanceGuardTest, TheFirstIsFirst)
{
    EXPECT_EQ(first_->begin({}, 0ms), Outcome::First);
}

TEST_F(InstanceGuardTest, WhoOnlyWantsToBeTheFirstLeavesTheFirstAlone)
{
    ASSERT_TRUE(first_->becomeFirst());
    int requests = 0;
    first_->handleWith([&](const Request &) { ++requests; });
    EXPECT_FALSE(second_.becomeFirst());
    QCoreApplication::processEvents();
    EXPECT_EQ(requests, 0);
    first_.reset();
    EXPECT_TRUE(second_.becomeFirst());
}

TEST_F(InstanceGuardTest, ALaterOneHandsOverWhatItWasAskedFor)
{
    ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
    QList<Request> requests;
    QStringList heard;
    first_->handleWith([&](const Request &request) {
        requests.append(request);
        heard += request.files;
    });
    // More than any packet holds.
    const QStringList files(5000, QStringLiteral("/home/somebody/Documents/Presets of mine/Preset.qnbp"));
    auto outcome = beginSecond({QStringLiteral("/panes/Ünïcode.prefPane"), "token", files});
    EXPECT_EQ(resultOf(outcome), Outcome::Handed);
    EXPECT_TRUE(waitUntil([&] { return heard == files; })) << heard.size();
    ASSERT_FALSE(requests.isEmpty());
    EXPECT_EQ(requests.constFirst().panePath, QStringLiteral("/panes/Ünïcode.prefPane"));
    EXPECT_EQ(requests.constFirst().activationToken, "token");
}

TEST_F(InstanceGuardTest, AStartOfTheFirstVersionIsUnderstood)
{
    const FirstVersionSocket start;
    ASSERT_NO_FATAL_FAILURE(handleAndConnect(start));
    ASSERT_TRUE(start.send(QStringLiteral("/pane"), QByteArray("token")));
    ASSERT_TRUE(waitUntil([&] { return requests_.size() == 1; }));
    EXPECT_EQ(requests_.constFirst().panePath, QStringLiteral("/pane"));
    EXPECT_EQ(requests_.constFirst().activationToken, "token");
    char answer = 0;
    ASSERT_EQ(::recv(start.descriptor, &answer, 1, 0), 1);
    EXPECT_EQ(answer, '+');
}

TEST_F(InstanceGuardTest, ARequestThatPromisesMoreFilesThanItHoldsIsNone)
{
    const FirstVersionSocket start;
    ASSERT_NO_FATAL_FAILURE(handleAndConnect(start));
    ASSERT_TRUE(start.send(QString(), QByteArray(), quint32(0xfffffff0)));
    char answer = 0;
    EXPECT_TRUE(waitUntil([&] { return ::recv(start.descriptor, &answer, 1, MSG_DONTWAIT) == 0; }));
    EXPECT_TRUE(requests_.isEmpty());
}

TEST_F(InstanceGuardTest, WhatIsMuchComesInSeveralRequests)
{
    ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
    QStringList files;
    int requests = 0;
    first_->handleWith([&](const Request &request) {
        EXPECT_EQ(request.panePath, QStringLiteral("/pane")) << "the files are for that one";
        files += request.files;
        ++requests;
    });
    QStringList wanted = packetsOfOneFile(2);
    for (int number = 0; number < 50000; ++number)
        wanted.append(QStringLiteral("/home/somebody/Documents/Presets of mine/Preset %1.qnbp").arg(number));
    auto outcome = beginSecond({QStringLiteral("/pane"), {}, wanted});
    EXPECT_EQ(resultOf(outcome), Outcome::Handed);
    EXPECT_TRUE(waitUntil([&] { return files == wanted; })) << files.size();
    EXPECT_GT(requests, 1) << "the first goes on with its own work in between";
}

TEST_F(InstanceGuardTest, OneThatNeverComesToAnEndIsCutOff)
{
    EXPECT_LT(filesHeardAtOnce(2000, 0ms), 1000);
}

TEST_F(InstanceGuardTest, OneThatIsSlowIsCutOff)
{
    EXPECT_LT(filesHeardAtOnce(60, 100ms), 60);
}

TEST_F(InstanceGuardTest, OneThatTakesPartAfterPartIsWaitedForAnew)
{
    const FirstVersionSocket window;
    ASSERT_NO_FATAL_FAILURE(answerInsteadOfTheFirst(window));
    // Together they take longer than is waited for one.
    auto outcome = beginSecond({{}, {}, packetsOfOneFile(6)}, 3s);
    EXPECT_EQ(partsTaken(window, 6, 700ms), 6);
    EXPECT_EQ(resultOf(outcome), Outcome::Handed);
}

TEST_F(InstanceGuardTest, OneThatTakesOnlyAPartIsToldAsSuch)
{
    const FirstVersionSocket window;
    ASSERT_NO_FATAL_FAILURE(answerInsteadOfTheFirst(window));
    auto outcome = beginSecond({{}, {}, packetsOfOneFile(2)}, 2s);
    EXPECT_EQ(partsTaken(window, 1, 0ms), 1);
    EXPECT_EQ(resultOf(outcome), Outcome::HandedInPart);
}

TEST_F(InstanceGuardTest, ATextThatIsTooLongIsHandedToNobody)
{
    const QString longest = u'/' + QString(70000, u'n');
    ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
    first_->handleWith([](const Request &) { FAIL() << "nor is a part of it"; });
    auto outcome = beginSecond({{}, {}, {QStringLiteral("/a.qnbp"), longest}});
    EXPECT_EQ(resultOf(outcome), Outcome::TooLong);
    first_.reset();
    EXPECT_EQ(second_.begin({{}, {}, {longest}}, 0ms), Outcome::First) << "it is for the first itself";
}

TEST_F(InstanceGuardTest, AWindowOfTheFirstVersionIsNotTakenForOneThatTakesFiles)
{
    const FirstVersionSocket window;
    ASSERT_NO_FATAL_FAILURE(answerInsteadOfTheFirst(window));
    const auto answersTo = [&](const Request &request) {
        auto outcome = beginSecond(request);
        EXPECT_TRUE(window.answerOne('+'));
        return resultOf(outcome);
    };
    EXPECT_EQ(answersTo({QStringLiteral("/pane"), {}}), Outcome::Handed);
    EXPECT_EQ(answersTo({QStringLiteral("/pane"), {}, {QStringLiteral("/file")}}), Outcome::WithoutFiles);
}

TEST_F(InstanceGuardTest, ALaterOneWaitsForAFirstThatIsStillStarting)
{
    ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
    auto outcome = beginSecond({});
    EXPECT_EQ(outcome.wait_for(100ms), std::future_status::timeout);
    first_->handleWith([](const Request &) {});
    EXPECT_EQ(resultOf(outcome), Outcome::Handed);
}

TEST_F(InstanceGuardTest, ALaterOneBecomesTheFirstWhenTheFirstIsEnding)
{
    ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
    first_->handleWith([](const Request &) { FAIL() << "the first was closed"; });
    first_->close();
    auto outcome = beginSecond({});
    EXPECT_EQ(outcome.wait_for(100ms), std::future_status::timeout);
    first_.reset();
    EXPECT_EQ(resultOf(outcome), Outcome::First);
}

TEST_F(InstanceGuardTest, AFirstThatDoesNotAnswerIsWaitedForOnlySoLong)
{
    ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(second_.begin({}, 150ms), Outcome::NoAnswer);
    EXPECT_LT(timer.elapsed(), 1000);
}

TEST_F(InstanceGuardTest, WhatAKilledOneLeftBehindIsNoObstacle)
{
    ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
    const QStringList names = QDir(folder_.path()).entryList(QDir::System | QDir::Files);
    ASSERT_EQ(names.size(), 2);
    first_.reset();
    for (const QString &name : names) {
        QFile leftOver(folder_.filePath(name));
        ASSERT_TRUE(leftOver.open(QIODevice::WriteOnly));
    }
    ASSERT_EQ(second_.begin({}, 0ms), Outcome::First);
    second_.handleWith([](const Request &) {});
    first_.emplace(configuration, folder_.path());
    auto outcome = std::async(std::launch::async, [&] { return first_->begin({}, 10s); });
    EXPECT_EQ(resultOf(outcome), Outcome::Handed);
}

TEST_F(InstanceGuardTest, AnotherPreferenceFolderIsAnotherMatter)
{
    ASSERT_EQ(first_->begin({}, 0ms), Outcome::First);
    InstanceGuard other(QStringLiteral("/home/another/.config"), folder_.path());
    EXPECT_EQ(other.begin({}, 0ms), Outcome::First);
}

TEST_F(InstanceGuardTest, WithoutAUsableRuntimeFolderEveryoneIsFirst)
{
    for (const QString &folder : {QString(), QStringLiteral("/nowhere"), QStringLiteral("/proc")}) {
        InstanceGuard one(configuration, folder);
        InstanceGuard other(configuration, folder);
        EXPECT_EQ(one.begin({}, 0ms), Outcome::First);
        EXPECT_EQ(other.begin({}, 0ms), Outcome::First);
    }
}

TEST_F(InstanceGuardTest, AFolderWithAPathTooLongForASocketServesAsWell)
{
    const QString deep = folder_.filePath(QString(200, u'd') + u'/' + QString(200, u'e'));
    ASSERT_TRUE(QDir().mkpath(deep));
    InstanceGuard one(configuration, deep);
    InstanceGuard other(configuration, deep);
    ASSERT_EQ(one.begin({}, 0ms), Outcome::First);
    QList<Request> requests;
    one.handleWith([&](const Request &request) { requests.append(request); });
    auto outcome = std::async(std::launch::async, [&] {
        return other.begin({QStringLiteral("/pane"), {}}, 10s);
    });
    EXPECT_EQ(resultOf(outcome), Outcome::Handed);
    ASSERT_EQ(requests.size(), 1);
    EXPECT_EQ(requests.constFirst().panePath, QStringLiteral("/pane"));
}
