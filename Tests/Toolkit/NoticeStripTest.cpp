// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/NoticeStrip.h"

#include <QAccessible>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>
#include <private/qguiapplication_p.h>
#include <qpa/qplatformaccessibility.h>
#include <qpa/qplatformintegration.h>

namespace {

using Kind = PaneNotice::Kind;

/// A strip above something that has the keyboard.
class NoticeStripTest : public ::testing::Test
{
protected:
    NoticeStripTest()
    {
        auto *const layout = new QVBoxLayout(&window_);
        layout->setContentsMargins({});
        layout->addWidget(&strip_);
        layout->addWidget(&view_, 1);
        window_.resize(600, 300);
        window_.show();
        view_.setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        view_.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window_));
    }
    ~NoticeStripTest() override
    {
        strip_.setParent(nullptr);
        view_.setParent(nullptr);
    }

    QString text() const { return strip_.isVisible() ? label().text() : QString(); }
    const QLabel &label() const { return *strip_.findChild<QLabel *>(QStringLiteral("noticeText")); }
    QList<QPushButton *> buttons() const
    {
        QList<QPushButton *> visible = strip_.findChildren<QPushButton *>();
        visible.removeIf([](const QPushButton *button) { return !button->isVisible(); });
        return visible;
    }
    PaneNotice notice(Kind kind, const QString &said, const QStringList &titles = {})
    {
        PaneNotice result{.kind = kind, .text = said};
        for (const QString &title : titles)
            result.actions.append({title, [this, title] { chosen_ << title; }});
        return result;
    }

    QWidget window_;
    NoticeStrip strip_;
    QPushButton view_;
    QStringList chosen_;
};

} // namespace

TEST_F(NoticeStripTest, TakesNoRoomWithoutANotice)
{
    EXPECT_FALSE(strip_.isVisible());
    EXPECT_EQ(view_.height(), window_.height());
    strip_.showNotice(notice(Kind::Hint, QStringLiteral("Said.")));
    EXPECT_TRUE(strip_.isVisible());
    EXPECT_TRUE(QTest::qWaitFor([this] { return view_.height() < window_.height(); }));
    strip_.takeBackNotice(Kind::Hint);
    EXPECT_FALSE(strip_.isVisible());
}

TEST_F(NoticeStripTest, AFailedSaveIsSaidWithTheSystemsWordsUntilOneSucceeds)
{
    strip_.saved(Result<>::failure(QStringLiteral("cannot write /home/u/x: No space left on device")));
    EXPECT_EQ(text(), QStringLiteral("Changes cannot be saved: No space left on device."));
    EXPECT_TRUE(strip_.toolTip().contains(u"cannot write /home/u/x"));
    EXPECT_EQ(view_.hasFocus(), true) << "the keyboard stays where it is";
    ASSERT_EQ(buttons().size(), 1);
    EXPECT_EQ(buttons().constFirst()->text(), QStringLiteral("Try Again"));
    strip_.saved({});
    EXPECT_FALSE(strip_.isVisible());
}

TEST_F(NoticeStripTest, TheMostImportantIsShownAndTheNextAfterIt)
{
    strip_.showNotice(notice(Kind::Hint, QStringLiteral("hint")));
    strip_.showNotice(notice(Kind::Recovery, QStringLiteral("recovery")));
    EXPECT_EQ(text(), QStringLiteral("recovery"));
    strip_.saved(Result<>::failure(QStringLiteral("x")));
    strip_.showNotice(notice(Kind::Unreadable, QStringLiteral("unreadable")));
    EXPECT_EQ(text(), QStringLiteral("Changes cannot be saved: x."));
    strip_.saved({});
    EXPECT_EQ(text(), QStringLiteral("unreadable"));
    strip_.showNotice(notice(Kind::Unreadable, QStringLiteral("for another reason")));
    EXPECT_EQ(text(), QStringLiteral("for another reason"));
    strip_.showNotice(notice(Kind::Replaced, QStringLiteral("replaced")));
    strip_.takeBackNotice(Kind::Unreadable);
    EXPECT_EQ(text(), QStringLiteral("replaced"));
    strip_.takeBackNotice(Kind::Replaced);
    EXPECT_EQ(text(), QStringLiteral("recovery"));
    strip_.setPane(nullptr);
    EXPECT_FALSE(strip_.isVisible());
}

TEST_F(NoticeStripTest, ItsButtonsAreReachedByTabAndPressedByKeys)
{
    strip_.showNotice(
        notice(Kind::Recovery, QStringLiteral("?"), {QStringLiteral("Restore"), QStringLiteral("Discard")}));
    QTest::keyClick(&window_, Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), buttons().constLast());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(chosen_, QStringList(2, QStringLiteral("Discard")));
    EXPECT_TRUE(strip_.isVisible()) << "whoever told it takes it back";
}

TEST_F(NoticeStripTest, TheSecondHalfOfADoubleClickAnswersNothing)
{
    strip_.showNotice(notice(Kind::Recovery, QStringLiteral("older"), {QStringLiteral("Discard")}));
    QTest::mouseDClick(buttons().constFirst(), Qt::LeftButton);
    QTest::mouseRelease(buttons().constFirst(), Qt::LeftButton);
    EXPECT_EQ(chosen_, QStringList());
    QTest::mouseClick(buttons().constFirst(), Qt::LeftButton);
    EXPECT_EQ(chosen_, QStringList(QStringLiteral("Discard")));
}

TEST_F(NoticeStripTest, AButtonWithTheKeyboardKeepsItWhenItsNoticeIsToldAgain)
{
    const Result<> failure = Result<>::failure(QStringLiteral("x"));
    strip_.saved(failure);
    buttons().constFirst()->setFocus();
    strip_.saved(failure);
    EXPECT_EQ(QApplication::focusWidget(), buttons().constFirst());
}

TEST_F(NoticeStripTest, WhatIsWorthKnowingOnceIsDismissed)
{
    strip_.showNotice(notice(Kind::Tip, QStringLiteral("This is possible.")));
    strip_.showNotice(notice(Kind::Hint, QStringLiteral("By the way.")));
    strip_.showNotice(notice(Kind::LeftOut, QStringLiteral("Not all was done.")));
    strip_.showNotice(notice(Kind::Replaced, QStringLiteral("Something took its place.")));
    for (const char *said :
         {"Something took its place.", "Not all was done.", "By the way.", "This is possible."}) {
        EXPECT_EQ(text(), QString::fromLatin1(said));
        ASSERT_EQ(buttons().size(), 1);
        EXPECT_EQ(buttons().constFirst()->text(), QStringLiteral("Dismiss"));
        buttons().constFirst()->click();
    }
    EXPECT_FALSE(strip_.isVisible());
}

TEST_F(NoticeStripTest, ShowsMarkupAsItIs)
{
    const QString markup = QStringLiteral("<h1>Big</h1> &amp; <img src=x>");
    PaneNotice told = notice(Kind::Hint, markup);
    told.details = markup;
    strip_.showNotice(told);
    EXPECT_EQ(label().textFormat(), Qt::PlainText);
    told.text = QStringLiteral("\u202Eevil");
    strip_.showNotice(told);
    EXPECT_EQ(text(), QStringLiteral("<U+202E>evil"));
    EXPECT_FALSE(strip_.toolTip().contains(u"<h1>"));
}

TEST_F(NoticeStripTest, IsAnAlertWithANameForScreenReaders)
{
    PaneNotice told = notice(Kind::Hint, QStringLiteral("Said."));
    told.details = QStringLiteral("More of it.");
    strip_.showNotice(told);
    QAccessibleInterface *const accessible = QAccessible::queryAccessibleInterface(&strip_);
    ASSERT_TRUE(accessible);
    EXPECT_EQ(accessible->role(), QAccessible::AlertMessage);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Said."));
    EXPECT_EQ(accessible->text(QAccessible::Description), QStringLiteral("More of it."));
}

TEST_F(NoticeStripTest, EachNewTextIsAnnouncedOnce)
{
    static QStringList announced;
    announced.clear();
    const auto before = QAccessible::installUpdateHandler([](QAccessibleEvent *event) {
        const auto *const strip = qobject_cast<NoticeStrip *>(event->object());
        if (strip && event->type() == QAccessible::Alert)
            announced << strip->accessibleName();
    });
    // As while a screen reader runs.
    QPlatformAccessibility &reader = *QGuiApplicationPrivate::platformIntegration()->accessibility();
    reader.setActive(true);
    ASSERT_TRUE(QAccessible::isActive());
    strip_.showNotice(notice(Kind::Recovery, QStringLiteral("One.")));
    strip_.showNotice(notice(Kind::Recovery, QStringLiteral("One.")));
    strip_.showNotice(notice(Kind::Hint, QStringLiteral("Not shown yet.")));
    strip_.showNotice(notice(Kind::Unreadable, QStringLiteral("Two.")));
    strip_.takeBackNotice(Kind::Unreadable);
    reader.setActive(false);
    QAccessible::installUpdateHandler(before);
    EXPECT_EQ(announced,
              QStringList({QStringLiteral("One."), QStringLiteral("Two."), QStringLiteral("One.")}));
}

TEST_F(NoticeStripTest, ItsSymbolHasThePixelsOfTheScreen)
{
    strip_.showNotice(notice(Kind::Hint, QStringLiteral("Said.")));
    const QLabel *symbol = nullptr;
    for (const QLabel *part : strip_.findChildren<QLabel *>()) {
        if (!part->pixmap().isNull())
            symbol = part;
    }
    ASSERT_TRUE(symbol);
    const int size = strip_.style()->pixelMetric(QStyle::PM_SmallIconSize);
    EXPECT_EQ(symbol->pixmap().size(), QSize(size, size) * strip_.devicePixelRatio());
    EXPECT_EQ(symbol->pixmap().deviceIndependentSize(), QSizeF(size, size));
}

TEST_F(NoticeStripTest, AWarningLooksLikeOne)
{
    struct Look
    {
        QColor ground;
        QColor edge;
        QImage symbol;
    };
    const auto lookOf = [this](Kind kind) {
        strip_.showNotice(notice(kind, QStringLiteral(".")));
        const QImage image = strip_.grab().toImage();
        Look look{image.pixelColor(1, 1), image.pixelColor(1, image.height() - 1), {}};
        for (const QLabel *part : strip_.findChildren<QLabel *>()) {
            if (!part->pixmap().isNull())
                look.symbol = part->pixmap().toImage();
        }
        strip_.takeBackNotice(kind);
        return look;
    };
    const Look hint = lookOf(Kind::Hint);
    const Look failure = lookOf(Kind::SaveFailed);
    EXPECT_EQ(hint.edge, strip_.palette().color(QPalette::Highlight));
    EXPECT_NE(hint.ground, hint.edge) << "only a trace of it";
    EXPECT_NE(hint.ground, strip_.palette().color(QPalette::Window));
    EXPECT_NE(hint.edge, failure.edge);
    EXPECT_FALSE(hint.symbol.isNull());
    EXPECT_NE(hint.symbol, failure.symbol);
    EXPECT_EQ(lookOf(Kind::Recovery).symbol, hint.symbol);
    EXPECT_EQ(lookOf(Kind::LeftOut).symbol, hint.symbol);
    EXPECT_EQ(lookOf(Kind::Unreadable).symbol, failure.symbol);
    EXPECT_EQ(lookOf(Kind::Replaced).symbol, failure.symbol);
}

TEST_F(NoticeStripTest, AReasonOfWhichTheSystemSaidNothingStaysWhole)
{
    EXPECT_EQ(NoticeStrip::shortReason(QStringLiteral("writing x: ")), QStringLiteral("writing x: "));
    EXPECT_EQ(NoticeStrip::shortReason(QStringLiteral("no home")), QStringLiteral("no home"));
}

TEST_F(NoticeStripTest, ItsTextCanBeCopied)
{
    strip_.showNotice(notice(Kind::Hint, QStringLiteral("Said.")));
    EXPECT_TRUE(label().textInteractionFlags() & Qt::TextSelectableByMouse);
}

TEST_F(NoticeStripTest, ButtonsGoBelowTheTextWhenTheWindowBecomesNarrow)
{
    strip_.showNotice(notice(Kind::Recovery, QStringLiteral("word word word word"),
                             {QStringLiteral("Restore Everything"), QStringLiteral("Discard Everything")}));
    const auto areBelow = [this] {
        return buttons().constFirst()->mapTo(&strip_, QPoint()).y() >= label().geometry().bottom();
    };
    window_.resize(1200, 300);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !areBelow(); }));
    window_.resize(300, 300);
    EXPECT_TRUE(QTest::qWaitFor(areBelow));
}

TEST_F(NoticeStripTest, WrapsInsteadOfWideningTheWindow)
{
    window_.resize(260, 300);
    QString sentence;
    for (int word = 0; word < 30; ++word)
        sentence += QStringLiteral("word ");
    strip_.showNotice(notice(Kind::Recovery, sentence,
                             {QStringLiteral("Restore Everything"), QStringLiteral("Discard Everything")}));
    EXPECT_TRUE(QTest::qWaitFor([this] {
        return label().height() >= label().heightForWidth(label().width());
    })) << "nothing is cut off";
    EXPECT_LE(strip_.width(), 300);
    for (const QPushButton *button : buttons()) {
        EXPECT_GE(button->width(), button->sizeHint().width());
        EXPECT_GE(button->mapTo(&strip_, QPoint()).y(), label().geometry().bottom()) << "below the text";
    }
}

TEST_F(NoticeStripTest, ItsTextIsReadableOnItsGroundInLightAndDark)
{
    for (const bool isDark : {false, true}) {
        window_.setPalette(isDark ? QPalette(Qt::white, QColor(40, 40, 40), Qt::gray, Qt::black, Qt::gray,
                                             Qt::white, QColor(30, 30, 30))
                                  : QPalette(QColor(239, 239, 239)));
        for (const Kind kind : {Kind::SaveFailed, Kind::Hint}) {
            strip_.showNotice(notice(kind, QStringLiteral(".")));
            const QColor ground = strip_.grab().toImage().pixelColor(1, 1);
            const QColor ink = label().palette().color(QPalette::WindowText);
            EXPECT_GT(std::abs(ground.lightness() - ink.lightness()), 120) << isDark;
            strip_.takeBackNotice(kind);
        }
    }
}
