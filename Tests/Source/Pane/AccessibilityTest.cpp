// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QCheckBox>
#include <QLabel>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTest>
#include <string>
#include <utility>
#include <vector>

namespace {

/// What a person who cannot see the screen would stumble over, in words.
class Complaints
{
public:
    void walk(QAccessibleInterface *root)
    {
        struct Place
        {
            QAccessibleInterface *object;
            QString path;
        };
        std::vector<Place> pending{{root, describe(*root)}};
        while (!pending.empty()) {
            const Place place = pending.back();
            pending.pop_back();
            ++seen_;
            judge(*place.object, place.path);
            QHash<QString, QString> siblings;
            for (int index = 0; index < place.object->childCount(); ++index) {
                QAccessibleInterface *child = place.object->child(index);
                if (!child || !child->isValid() || child->state().invisible)
                    continue;
                const QString path = QStringLiteral("%1 > %2").arg(place.path, describe(*child));
                const QString name = child->text(QAccessible::Name);
                if (!name.isEmpty() && siblings.contains(name))
                    complaints_ << QStringLiteral("%1 is called like %2").arg(path, siblings.value(name));
                siblings.insert(name, path);
                pending.push_back({child, path});
            }
        }
    }

    int seen() const { return seen_; }
    std::string text() const { return complaints_.join(u'\n').toStdString(); }

private:
    static QString describe(const QAccessibleInterface &object)
    {
        const QString role = QString::fromLatin1(qAccessibleRoleString(object.role()));
        const QString id = object.object() ? object.object()->objectName() : QString();
        return QStringLiteral("%1 \"%2\" %3").arg(role, object.text(QAccessible::Name), id);
    }

    void judge(const QAccessibleInterface &object, const QString &path)
    {
        const auto *widget = qobject_cast<QWidget *>(object.object());
        const bool isReached = object.state().focusable && !(widget && widget->focusProxy());
        if (isReached && object.text(QAccessible::Name).trimmed().isEmpty())
            complaints_ << QStringLiteral("%1 has no name").arg(path);
        const QAccessible::Role role = object.role();
        if (isReached && (role == QAccessible::NoRole || role == QAccessible::Client ||
                          role == QAccessible::Pane || role == QAccessible::Grouping))
            complaints_ << QStringLiteral("%1 can be reached, but has no role").arg(path);
    }

    QStringList complaints_;
    int seen_ = 0;
};

class Accessibility : public PaneFixture
{
protected:
    void SetUp() override
    {
        store({preset(QStringLiteral("First"), {QStringLiteral("folder/"), QStringLiteral("file")}),
               preset(QStringLiteral("Second"))});
        // Without one there is nothing to start.
        addHelper();
        openPane();
    }
};

} // namespace

TEST_F(Accessibility, EveryControlOfEveryTabHasANameOfItsOwnAndARole)
{
    auto *tabs = outlet<QTabWidget>(QStringLiteral("_tabs"));
    ASSERT_EQ(tabs->count(), 3);
    for (int tab = 0; tab < tabs->count(); ++tab) {
        tabs->setCurrentIndex(tab);
        Complaints complaints;
        complaints.walk(QAccessible::queryAccessibleInterface(view.get()));
        EXPECT_EQ(complaints.text(), "") << tab;
        EXPECT_GT(complaints.seen(), 10) << tab;
    }
}

TEST_F(Accessibility, EveryEntryOfEveryMenuHasANameOfItsOwn)
{
    const QList<QMenu *> menus = view->findChildren<QMenu *>();
    ASSERT_GE(menus.size(), 5);
    outline().selectRow(2);
    for (QMenu *menu : menus) {
        menu->popup(view->mapToGlobal(QPoint(0, 0)));
        Complaints complaints;
        complaints.walk(QAccessible::queryAccessibleInterface(menu));
        EXPECT_EQ(complaints.text(), "") << qPrintable(menu->title());
        EXPECT_GE(complaints.seen(), 2) << qPrintable(menu->title()) << ": the menu and an entry";
        menu->close();
    }
}

TEST_F(Accessibility, ALargeFontClipsNothing)
{
    QFont font = view->font();
    font.setPointSize(14);
    view->setFont(font);
    auto *tabs = outlet<QTabWidget>(QStringLiteral("_tabs"));
    for (int tab = 0; tab < tabs->count(); ++tab) {
        tabs->setCurrentIndex(tab);
        QCoreApplication::sendPostedEvents();
        // The host scrolls what is smaller.
        view->resize(view->sizeHint());
        QCoreApplication::sendPostedEvents();
        int judged = 0;
        for (const QWidget *widget : tabs->currentWidget()->findChildren<QWidget *>()) {
            const bool hasText =
                qobject_cast<const QAbstractButton *>(widget) ||
                (qobject_cast<const QLabel *>(widget) && !qobject_cast<const QLabel *>(widget)->wordWrap());
            if (!hasText || !widget->isVisible())
                continue;
            ++judged;
            EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << qPrintable(widget->objectName());
            EXPECT_GE(widget->height(), widget->minimumSizeHint().height())
                << qPrintable(widget->objectName());
            const QRect place(widget->mapTo(view.get(), QPoint()), widget->size());
            EXPECT_TRUE(view->rect().contains(place)) << qPrintable(widget->objectName());
        }
        EXPECT_GT(judged, 2) << tab;
    }
}

TEST_F(Accessibility, TheRowsOfBothColumnsStandSideBySide)
{
    for (const int pointSize : {8, 10, 14, 20}) {
        QFont font = view->font();
        font.setPointSize(pointSize);
        view->setFont(font);
        QCoreApplication::sendPostedEvents();
        // In less room the buttons of the narrower column would break into two rows.
        view->resize(view->sizeHint() * 2);
        QCoreApplication::sendPostedEvents();
        for (const auto &[left, right] : {std::pair("_addPresetButton", "_addFileButton"),
                                          std::pair("_presetActionsButton", "_itemActionsButton"),
                                          std::pair("_descriptionToggle", "_scriptLabel"),
                                          std::pair("_descriptionToggle", "_scriptButton")}) {
            const auto middle = [this](const char *name) {
                const auto *widget = outlet<QWidget>(QString::fromLatin1(name));
                return widget->mapTo(view.get(), widget->rect().center()).y();
            };
            EXPECT_NEAR(middle(left), middle(right), 1) << left << pointSize;
        }
    }
}

TEST_F(Accessibility, AtItsSmallestTheDescriptionCanStillBeRead)
{
    view->resize(view->minimumSizeHint());
    QCoreApplication::sendPostedEvents();
    const auto *description = outlet<QPlainTextEdit>(QStringLiteral("_ui_presetDescription"));
    EXPECT_GE(description->viewport()->height(), 2 * description->fontMetrics().height());
    auto *toggle = outlet<QCheckBox>(QStringLiteral("_descriptionToggle"));
    toggle->click();
    QCoreApplication::sendPostedEvents();
    EXPECT_FALSE(description->isVisible() && !description->visibleRegion().isEmpty());
    EXPECT_FALSE(toggle->isChecked());
}

TEST_F(Accessibility, TabReachesEveryControlInOrderAndComesBackAround)
{
    const QList<QByteArrayList> orders = {
        {"_tabs", "_ui_presetListView", "_ui_presetDescription", "_addPresetButton", "_removePresetButton",
         "_presetActionsButton", "_descriptionToggle", "_ui_presetHierarchyView", "_addFileButton",
         "_addFolderButton", "_itemActionsButton", "_scriptButton"},
        {"_tabs", "_ui_startStopButton", "_ui_showMenubar", "_ui_shortcutRecorderControl"},
        {"_tabs", "_ui_websiteLink", "_helpButton"},
    };
    // A control that is made of others has their name.
    const auto nameOf = [](const QObject *widget) {
        while (!widget->objectName().startsWith(u'_'))
            widget = widget->parent();
        return widget->objectName().toLatin1();
    };
    auto *tabs = outlet<QTabWidget>(QStringLiteral("_tabs"));
    for (int tab = 0; tab < tabs->count(); ++tab) {
        tabs->setCurrentIndex(tab);
        tabs->setFocus();
        const QWidget *start = view->focusWidget();
        QByteArrayList reached;
        int stops = 0;
        do {
            // A text and the link in it are two stops.
            if (const QByteArray name = nameOf(view->focusWidget());
                reached.isEmpty() || reached.back() != name)
                reached << name;
            ASSERT_LT(++stops, 50) << reached.join(' ').constData();
            QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
        } while (view->focusWidget() != start);
        EXPECT_EQ(reached, orders.at(tab)) << reached.join(' ').constData();
    }
}
