// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/AlertPanel.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <memory>

namespace {

const AlertPanel question{.title = QStringLiteral("Throw Away"),
                          .message = QStringLiteral("Throw <b>bold</b> & away?"),
                          .defaultButton = QStringLiteral("Throw Away"),
                          .alternateButton = QStringLiteral("Keep")};

class AlertPanelTest : public ::testing::Test
{
protected:
    AlertPanelTest()
    {
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }

    /// Runs \a alert and does \a meanwhile once the box has the focus.
    AlertPanel::Answer answer(const AlertPanel &alert, const std::function<void(QMessageBox &)> &meanwhile)
    {
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, &poll, [&poll, &meanwhile] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || !box->isActiveWindow())
                return;
            poll.stop();
            meanwhile(*box);
        });
        poll.start(1);
        return alert.run(window.get());
    }
    AlertPanel::Answer answerToKey(const AlertPanel &alert, Qt::Key key)
    {
        return answer(alert, [key](QMessageBox &box) { QTest::keyClick(&box, key); });
    }
    AlertPanel::Answer answerToClick(const AlertPanel &alert, const QString &text)
    {
        return answer(alert, [&text](QMessageBox &box) {
            for (QAbstractButton *button : box.buttons()) {
                if (button->text() == text)
                    button->click();
            }
        });
    }

    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
};

TEST_F(AlertPanelTest, EachButtonIsItsAnswer)
{
    AlertPanel three = question;
    three.otherButton = QStringLiteral("Later");
    EXPECT_EQ(answerToClick(three, three.defaultButton), AlertPanel::Answer::Default);
    EXPECT_EQ(answerToClick(three, three.alternateButton), AlertPanel::Answer::Alternate);
    EXPECT_EQ(answerToClick(three, three.otherButton), AlertPanel::Answer::Other);
}

TEST_F(AlertPanelTest, ReturnIsTheDefaultAndEscapeTheAlternate)
{
    EXPECT_EQ(answerToKey(question, Qt::Key_Return), AlertPanel::Answer::Default);
    EXPECT_EQ(answerToKey(question, Qt::Key_Escape), AlertPanel::Answer::Alternate);
    AlertPanel message = question;
    message.alternateButton.clear();
    EXPECT_EQ(answerToKey(message, Qt::Key_Escape), AlertPanel::Answer::Default);
}

TEST_F(AlertPanelTest, WithoutAnyTitleThereIsAnOKButton)
{
    const AlertPanel message{
        .title = QStringLiteral("Note"), .message = QStringLiteral("Well."), .defaultButton = QString()};
    EXPECT_EQ(answer(message,
                     [](QMessageBox &box) {
                         EXPECT_EQ(box.buttons().size(), 1);
                         QAbstractButton *button = box.buttons().constFirst();
                         EXPECT_EQ(button->text().remove(u'&'), QStringLiteral("OK"));
                         EXPECT_TRUE(button->isVisible() && button->isEnabled());
                         button->click();
                     }),
              AlertPanel::Answer::Default);
    EXPECT_EQ(answerToKey(message, Qt::Key_Return), AlertPanel::Answer::Default);
    EXPECT_EQ(answerToKey(message, Qt::Key_Escape), AlertPanel::Answer::Default);
}

TEST_F(AlertPanelTest, ClosingItIsTheAlternate)
{
    EXPECT_EQ(answer(question, [](QMessageBox &box) { box.close(); }), AlertPanel::Answer::Alternate);
}

TEST_F(AlertPanelTest, ShowsItsTextsAsTheyAreToBeSelectedAndRead)
{
    answer(question, [this](QMessageBox &box) {
        EXPECT_EQ(box.windowTitle(), question.title);
        EXPECT_EQ(box.windowModality(), Qt::WindowModal);
        EXPECT_EQ(box.parentWidget(), window.get());
        int texts = 0;
        for (const QLabel *label : box.findChildren<QLabel *>()) {
            if (label->text().isEmpty())
                continue;
            ++texts;
            EXPECT_EQ(label->textFormat(), Qt::PlainText);
            EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByMouse);
            EXPECT_TRUE(label->textInteractionFlags() & Qt::TextSelectableByKeyboard);
        }
        EXPECT_EQ(texts, 2);
        EXPECT_EQ(box.text(), question.title);
        EXPECT_EQ(box.informativeText(), question.message);
        EXPECT_EQ(box.buttons().size(), 2);
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(&box);
        EXPECT_EQ(accessible->role(), QAccessible::AlertMessage);
        EXPECT_EQ(accessible->text(QAccessible::Name), question.title);
        EXPECT_EQ(accessible->text(QAccessible::Description), question.message);
        box.reject();
    });
}

TEST_F(AlertPanelTest, ShowsEveryCharacter)
{
    AlertPanel hidden = question;
    hidden.title = QStringLiteral("a\nb");
    hidden.message = QStringLiteral("one\n\u202Etwo\u009B");
    answer(hidden, [](QMessageBox &box) {
        EXPECT_EQ(box.windowTitle(), u"a␊b");
        EXPECT_EQ(box.text(), u"a␊b");
        EXPECT_EQ(box.informativeText(), u"one\n<U+202E>two<U+009B>");
        box.reject();
    });
}

TEST_F(AlertPanelTest, HasNoAnswerWhenItsWindowGoes)
{
    EXPECT_EQ(answer(question, [this](QMessageBox &) { window.reset(); }), AlertPanel::Answer::None);
}

TEST_F(AlertPanelTest, HasNoAnswerWhenTheProgramIsToldToEnd)
{
    AlertPanel message = question;
    message.alternateButton.clear();
    for (const AlertPanel &alert : {question, message}) {
        // As a program asks: in an event loop of its own, which is what ends.
        QTimer::singleShot(0, window.get(), [&] {
            EXPECT_EQ(answer(alert, [](QMessageBox &) { QCoreApplication::exit(); }),
                      AlertPanel::Answer::None);
        });
        QCoreApplication::exec();
    }
}

TEST_F(AlertPanelTest, ItsRunnerAsks)
{
    const AlertPanel::Runner runner = AlertPanel::runner();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &poll, [&poll] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        poll.stop();
        box->escapeButton()->click();
    });
    poll.start(1);
    EXPECT_EQ(runner(nullptr, question), AlertPanel::Answer::Alternate);
}

} // namespace
