// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/CreationWorker.h"

#include "Tests/Session/ChildProcess.h"
#include "Tests/Session/TemporaryHome.h"

#include <QFile>
#include <QMap>

#include <gtest/gtest.h>

namespace {

/// In a home without presets, so that each order ends at once.
class CreationWorkerTest : public ::testing::Test
{
protected:
    CreationWorkerTest()
    {
        const QProcessEnvironment environment = home_.environment();
        for (const char *name :
             {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_RUNTIME_DIR"}) {
            before_.insert(name, qgetenv(name));
            qputenv(name, QFile::encodeName(environment.value(QString::fromLatin1(name))));
        }
    }
    ~CreationWorkerTest() override
    {
        for (auto variable = before_.begin(); variable != before_.end(); ++variable)
            qputenv(variable.key().constData(), variable.value());
    }

    QList<CreationOrder> orders(qsizetype count) const
    {
        return QList<CreationOrder>(count, {0, QStringLiteral("None"), home_.path()});
    }

    const TemporaryHome home_;

private:
    QMap<QByteArray, QByteArray> before_;
};

} // namespace

TEST_F(CreationWorkerTest, OnlySoManyOrdersWaitAndMoreAreTakenOnceThereIsRoom)
{
    qsizetype ended = 0;
    bool isIdle = false;
    CreationWorker worker(
        {.begun = [](const CreationOrder &) {},
         .ended = [&](const CreationOrder &, const std::shared_ptr<CreationReport> &) { ++ended; },
         .undone = [](const UndoReport &) {},
         .askAboutScript = [](const CreationOrder &, const Script &) {},
         .idle = [&] { isIdle = true; }});
    constexpr qsizetype most = CreationWorker::mostWaiting;
    EXPECT_FALSE(worker.create(orders(most + 1)));
    EXPECT_FALSE(worker.isBusy());
    // None ends before events are processed here.
    EXPECT_TRUE(worker.create(orders(most - 1)));
    EXPECT_FALSE(worker.create(orders(2)));
    EXPECT_TRUE(worker.create(orders(1)));
    ASSERT_TRUE(waitUntil([&] { return isIdle; }, std::chrono::minutes(1)));
    EXPECT_EQ(ended, most);
    EXPECT_TRUE(worker.create(orders(1)));
}
