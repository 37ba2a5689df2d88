// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/PaneSession.h"

#include <QPointer>
#include <QPushButton>
#include <QWidget>

#include <gtest/gtest.h>
#include <optional>

namespace {

/// Records its calls, and whether the view outlives it.
class RecordedPane : public PreferencePane
{
public:
    RecordedPane(QStringList &calls, bool makesView)
        : calls_(calls)
        , makesView_(makesView)
    {
    }
    ~RecordedPane() override
    {
        calls_.append(view_ ? QStringLiteral("end") : QStringLiteral("end without view"));
    }
    void setListener(PreferencePaneListener *listener) override { listener_ = listener; }
    QWidget *loadMainView() override
    {
        calls_.append(QStringLiteral("loadMainView"));
        if (makesView_)
            view_ = new QWidget;
        return view_;
    }
    QWidget *mainView() const override { return view_; }
    void mainViewDidLoad() override { calls_.append(QStringLiteral("mainViewDidLoad")); }
    void didSelect() override { calls_.append(QStringLiteral("didSelect")); }
    Result<> didUnselect() override
    {
        calls_.append(QStringLiteral("didUnselect"));
        return saveAs(QStringLiteral("No room"));
    }
    Result<> save() override
    {
        calls_.append(QStringLiteral("save"));
        return saveAs(QStringLiteral("Still no room"));
    }
    Result<> saveCopy(const QString &) override { return {}; }

    int failures = 0;

private:
    Result<> saveAs(const QString &reason)
    {
        const Result<> saved = failures-- > 0 ? Result<>::failure(reason) : Result<>();
        listener_->saved(saved);
        return saved;
    }

    QStringList &calls_;
    PreferencePaneListener *listener_ = nullptr;
    const bool makesView_;
    QPointer<QWidget> view_;
};

class PaneSessionTest : public ::testing::Test
{
protected:
    void begin(bool makesView = true)
    {
        auto pane = std::make_unique<RecordedPane>(calls_, makesView);
        pane_ = pane.get();
        session_.emplace(std::move(pane));
    }

    QStringList calls_;
    RecordedPane *pane_ = nullptr;
    std::optional<PaneSession> session_;
};

} // namespace

TEST_F(PaneSessionTest, MakesEveryCallOnceAndInOrder)
{
    begin();
    session_->select();
    const QPointer<QWidget> view = session_->view();
    session_.reset();
    EXPECT_EQ(calls_.join(u' '), QStringLiteral("loadMainView mainViewDidLoad didSelect didUnselect end"));
    EXPECT_TRUE(view.isNull());
}

TEST_F(PaneSessionTest, ShowingTheViewAgainIsNoSecondSelection)
{
    begin();
    session_->select();
    session_->select();
    session_.reset();
    EXPECT_EQ(calls_.count(QStringLiteral("didSelect")), 1);
    EXPECT_EQ(calls_.count(QStringLiteral("didUnselect")), 1);
}

TEST_F(PaneSessionTest, APaneThatWasNeverShownIsNotUnselected)
{
    begin();
    session_.reset();
    EXPECT_EQ(calls_.join(u' '), QStringLiteral("loadMainView mainViewDidLoad end"));
}

TEST_F(PaneSessionTest, TheViewOutlivesAPaneThatIsEndedFirst)
{
    begin();
    session_->select();
    const QPointer<QWidget> view = session_->view();
    EXPECT_TRUE(session_->end());
    EXPECT_TRUE(session_->end());
    session_->select();
    EXPECT_EQ(calls_.join(u' '), QStringLiteral("loadMainView mainViewDidLoad didSelect didUnselect end"));
    EXPECT_FALSE(view.isNull());
    session_.reset();
    EXPECT_TRUE(view.isNull());
    EXPECT_EQ(calls_.count(QStringLiteral("didUnselect")), 1);
}

TEST_F(PaneSessionTest, APaneWithoutAViewGivesWayToAPageThatSaysSo)
{
    begin(false);
    ASSERT_TRUE(session_->view());
    EXPECT_EQ(session_->view()->objectName(), QStringLiteral("errorPage"));
    session_->select();
    session_.reset();
    EXPECT_EQ(calls_.join(u','), QStringLiteral("loadMainView,end without view"));
}

TEST_F(PaneSessionTest, TheStripTellsOfAFailedSaveAndTriesAgain)
{
    begin();
    session_->select();
    EXPECT_TRUE(session_->strip().isHidden());
    pane_->failures = 2;
    EXPECT_FALSE(session_->save());
    EXPECT_FALSE(session_->strip().isHidden());
    auto *const tryAgain = session_->strip().findChild<QPushButton *>();
    ASSERT_TRUE(tryAgain);
    tryAgain->click();
    EXPECT_FALSE(session_->strip().isHidden());
    // Another button, of the new notice.
    session_->strip().findChildren<QPushButton *>().constLast()->click();
    EXPECT_EQ(calls_.count(QStringLiteral("save")), 3);
    EXPECT_TRUE(session_->strip().isHidden());
}

TEST_F(PaneSessionTest, AFailedSaveIsTriedOnceMoreWhenThePaneGoes)
{
    begin();
    session_->select();
    pane_->failures = 1;
    EXPECT_TRUE(session_->end());
    EXPECT_EQ(calls_.mid(3).join(u' '), QStringLiteral("didUnselect save end"));
}

TEST_F(PaneSessionTest, TheEndSaysThatNothingCouldBeSaved)
{
    begin();
    session_->select();
    pane_->failures = 2;
    const Result<> saved = session_->end();
    EXPECT_EQ(saved.error, QStringLiteral("Still no room"));
    EXPECT_TRUE(session_->strip().isHidden()) << "the pane has gone, and with it what it told";
}
