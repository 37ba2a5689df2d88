// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/EditingDelegate.h"

#include "Toolkit/PlainText.h"
#include "Toolkit/TextFieldCell.h"
#include "Toolkit/TintedIconEngine.h"

#include <QAbstractItemView>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QInputMethod>
#include <QLineEdit>
#include <QToolTip>
#include <algorithm>
#include <limits>

namespace {

constexpr qsizetype longestShown = 2000;

/// \a row up to the edge of \a viewport: what is typed beyond that would not be seen.
QRect withoutHiddenEnd(QRect row, const QWidget *viewport)
{
    if (!viewport || !row.intersects(viewport->rect()))
        return row;
    if (viewport->isRightToLeft())
        row.setLeft(std::max(row.left(), viewport->rect().left()));
    else
        row.setRight(std::min(row.right(), viewport->rect().right()));
    return row;
}

} // namespace

EditingDelegate::EditingDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

EditingDelegate::~EditingDelegate() = default;

void EditingDelegate::setDataCell(std::unique_ptr<TextFieldCell> cell)
{
    cell_ = std::move(cell);
}

QString EditingDelegate::displayText(const QVariant &value, const QLocale &locale) const
{
    const QString text = value.toString();
    if (text.size() <= longestShown)
        return QStyledItemDelegate::displayText(value, locale);
    const bool isCutInCharacter = text.at(longestShown - 1).isHighSurrogate();
    return QStyledItemDelegate::displayText(text.first(longestShown - (isCutInCharacter ? 1 : 0)), locale) +
           u'…';
}

void EditingDelegate::endEditing()
{
    if (!editor_)
        return;
    QGuiApplication::inputMethod()->commit();
    Q_EMIT commitData(editor_);
    Q_EMIT closeEditor(editor_, NoHint);
    editor_ = nullptr;
}

void EditingDelegate::selectText(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (!cell_ || !editor_)
        return;
    const auto length = static_cast<int>(index.data(Qt::EditRole).toString().size());
    cell_->selectWithFrame(withoutHiddenEnd(option.rect, editor_->parentWidget()), prepareCell(option, index),
                           *editor_, 0, length);
}

void EditingDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    if (cell_)
        cell_->drawWithFrame(option.rect, prepareCell(option, index), *painter);
    else
        QStyledItemDelegate::paint(painter, option, index);
}

QSize EditingDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    constexpr int air = 6;
    const QSize size =
        cell_ ? cell_->cellSize(prepareCell(option, index)) : QStyledItemDelegate::sizeHint(option, index);
    return size.expandedTo({0, option.fontMetrics.height() + air});
}

QWidget *EditingDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                       const QModelIndex &index) const
{
    if (cell_ && !cell_->isEditable())
        return nullptr;
    editor_ = QStyledItemDelegate::createEditor(parent, option, index);
    // Texts come from files, too. What is longer than an editor takes would be cut by opening it.
    if (auto *line = qobject_cast<QLineEdit *>(editor_.data()))
        line->setMaxLength(std::numeric_limits<int>::max());
    // The keyboard comes to the view by way of the editor, and leaves it so: all that is selected may change.
    parent->update();
    return editor_;
}

void EditingDelegate::updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                                           const QModelIndex &index) const
{
    QStyleOptionViewItem seen(option);
    seen.rect = withoutHiddenEnd(option.rect, editor->parentWidget());
    if (cell_)
        cell_->editWithFrame(seen.rect, prepareCell(option, index), *editor);
    else
        QStyledItemDelegate::updateEditorGeometry(editor, seen, index);
}

bool EditingDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                                const QStyleOptionViewItem &option, const QModelIndex &index)
{
    QString text = index.data(Qt::AccessibleDescriptionRole).toString();
    if (text.isEmpty() && !isSeenAsAWhole(*view, option, index))
        text = displayText(index.data(Qt::DisplayRole), view->locale());
    if (event->type() != QEvent::ToolTip || text.isEmpty())
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QToolTip::showText(event->globalPos(), PlainText::toolTip(text), view->viewport(), option.rect);
    return true;
}

bool EditingDelegate::isSeenAsAWhole(const QAbstractItemView &view, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    QRect content(option.rect);
    content.setWidth(sizeHint(option, index).width());
    if (option.direction == Qt::RightToLeft)
        content.moveRight(option.rect.right());
    const QRect seen = option.rect & view.viewport()->rect();
    return content.left() >= seen.left() && content.right() <= seen.right();
}

void EditingDelegate::destroyEditor(QWidget *editor, const QModelIndex &index) const
{
    if (editor_ == editor)
        editor_ = nullptr;
    if (QWidget *parent = editor->parentWidget())
        parent->update();
    QStyledItemDelegate::destroyEditor(editor, index);
}

void EditingDelegate::initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (!option->icon.isMask())
        return;
    const QPalette::ColorGroup group = !option->state.testFlag(QStyle::State_Enabled) ? QPalette::Disabled
                                       : option->state.testFlag(QStyle::State_Active) ? QPalette::Active
                                                                                      : QPalette::Inactive;
    const bool isSelected = option->state.testFlag(QStyle::State_Selected);
    const QColor color =
        option->palette.color(group, isSelected ? QPalette::HighlightedText : QPalette::Text);
    option->icon = QIcon(new TintedIconEngine(option->icon, color));
}

/// What the row looks like, as the model and through it the view's delegate decide; the cell is given its
/// icon.
QStyleOptionViewItem EditingDelegate::prepareCell(const QStyleOptionViewItem &option,
                                                  const QModelIndex &index) const
{
    QStyleOptionViewItem prepared(option);
    initStyleOption(&prepared, index);
    cell_->setImage(prepared.icon, prepared.decorationSize);
    return prepared;
}
