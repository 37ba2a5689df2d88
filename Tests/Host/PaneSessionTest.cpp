// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/PaneSession.h"

#include <QPointer>
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
    void didUnselect() override { calls_.append(QStringLiteral("didUnselect")); }

private:
    QStringList &calls_;
    const bool makesView_;
    QPointer<QWidget> view_;
};

class PaneSessionTest : public ::testing::Test
{
protected:
    void begin(bool makesView = true) { session_.emplace(std::make_unique<RecordedPane>(calls_, makesView)); }

    QStringList calls_;
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
    session_->end();
    session_->end();
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
