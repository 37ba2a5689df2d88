// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/CreationWorker.h"

#include "Tests/Helper/HelperFixture.h"
#include "Tests/Session/ChildProcess.h"

#include <QFile>
#include <QMap>

#include <algorithm>
#include <gmock/gmock.h>
#include <thread>

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr auto workerPatience = std::chrono::minutes(1);
const QString large = QStringLiteral("Large");

/// Without presets in the home each order ends at once.
class CreationWorkerTest : public HelperFixture
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
    void storeLargePreset()
    {
        QVariantList files;
        for (int i = 0; i < 1000; ++i)
            files.append(file(QString::number(i)));
        storePresets({preset(large, {folder(QStringLiteral("In"), files)})});
    }
    CreationWorker::Handlers handlers()
    {
        return {.begun = [](const CreationOrder &) {},
                .ended = [this](const CreationOrder &,
                                const std::shared_ptr<CreationReport> &report) { created_ = report; },
                .undone = [this](const UndoReport &report) { undone_ = report.status; },
                .askAboutScript = [](const CreationOrder &, const Script &) {},
                .idle = [] {}};
    }

    std::shared_ptr<CreationReport> created_;
    UndoReport::Status undone_ = UndoReport::Status::NothingToUndo;

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
    ASSERT_TRUE(waitUntil([&] { return isIdle; }, workerPatience));
    EXPECT_EQ(ended, most);
    EXPECT_TRUE(worker.create(orders(1)));
}

TEST_F(CreationWorkerTest, OrdersAreTakenFromAnyThread)
{
    constexpr qsizetype each = 50;
    qsizetype ended = 0;
    CreationWorker::Handlers counting = handlers();
    counting.ended = [&](const CreationOrder &, const std::shared_ptr<CreationReport> &) { ++ended; };
    CreationWorker worker(counting);
    const auto give = [&] {
        for (qsizetype i = 0; i < each; ++i)
            EXPECT_TRUE(worker.create(orders(1)));
    };
    std::thread other(give);
    give();
    other.join();
    EXPECT_TRUE(waitUntil([&] { return ended == 2 * each; }, workerPatience));
    EXPECT_FALSE(worker.isBusy());
}

TEST_F(CreationWorkerTest, WhatItCreatesCanBeWatchedAndUndone)
{
    storeLargePreset();
    CreationWorker worker(handlers());
    qsizetype furthest = 0;
    ASSERT_TRUE(worker.create({{0, large, target()}}));
    ASSERT_TRUE(waitUntil(
        [&] {
            furthest = std::max(furthest, worker.progress().done);
            return !worker.isBusy();
        },
        workerPatience));
    ASSERT_TRUE(created_);
    EXPECT_EQ(created_->status, CreationReport::Status::Created) << qPrintable(created_->message);
    EXPECT_GT(furthest, 0);
    EXPECT_EQ(tree().size(), 1001);
    worker.undo(created_);
    ASSERT_TRUE(waitUntil([&] { return !worker.isBusy(); }, workerPatience));
    EXPECT_EQ(undone_, UndoReport::Status::Undone);
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(CreationWorkerTest, WhatIsCancelledWhileItIsCreatedIsUndone)
{
    storeLargePreset();
    CreationWorker worker(handlers());
    ASSERT_TRUE(worker.create({{0, large, target()}}));
    ASSERT_TRUE(waitUntil(
        [&] {
            worker.cancel();
            return !worker.isBusy();
        },
        workerPatience));
    ASSERT_TRUE(created_);
    EXPECT_EQ(created_->status, CreationReport::Status::Cancelled) << qPrintable(created_->message);
    EXPECT_THAT(tree(), IsEmpty());
}

TEST_F(CreationWorkerTest, OfPresetsThatShareALabelNoneIsTakenForAnother)
{
    const QString same = QStringLiteral("Same");
    const QVariantMap first = preset(same, {folder(QStringLiteral("First"), {})});
    const QVariantMap second = preset(same, {folder(QStringLiteral("Second"), {})});
    storePresets({preset(large, {}), first, second});
    CreationWorker worker(handlers());
    const auto create = [&](qsizetype place) {
        ASSERT_TRUE(worker.create({{place, same, target()}}));
        ASSERT_TRUE(waitUntil([&] { return !worker.isBusy(); }, workerPatience));
        ASSERT_TRUE(created_);
    };
    ASSERT_NO_FATAL_FAILURE(create(0));
    EXPECT_THAT(created_->message.toStdString(), HasSubstr("#2, #3"));
    EXPECT_THAT(tree(), IsEmpty());
    ASSERT_NO_FATAL_FAILURE(create(2));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Second/")));
    // The only one is found wherever it is.
    storePresets({second});
    worker.undo(created_);
    ASSERT_NO_FATAL_FAILURE(create(2));
    EXPECT_THAT(tree(), ElementsAre(QStringLiteral("Second/")));
    storePresets({});
    ASSERT_NO_FATAL_FAILURE(create(0));
    EXPECT_THAT(created_->message.toStdString(), HasSubstr("no preset"));
}
