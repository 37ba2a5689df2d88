// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Toolkit/DraggingInfo.h"
#include "Toolkit/ViewCell.h"
#include "Toolkit/ViewDragging.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTreeView>
#include <QUrl>

class ArrayController;
class EditingDelegate;
class KeyValueCoding;
class TableView;
class TableViewModel;

/// One column of a TableView.
struct TableColumn
{
    QString identifier;
    /// The records' attribute that the column shows; none if empty.
    QString key = {};
    bool isEditable = false;
    /// In device-independent pixels; the last column takes what is left.
    int width = 0;
    /// What assistive technology calls the cells of a column without texts, with the row's first text for %1.
    QString accessibleName = {};
};

/// Where a drop would go, from the row that is told with it.
enum class TableDropOperation {
    On,
    /// Between that row and the one before; the number of rows stands for the end.
    Above,
};

/// What a TableView asks of the code that it works for.
class TableViewDelegate
{
public:
    virtual ~TableViewDelegate() = default;
    virtual void tableViewWillDisplayCell(TableView &, ViewCell &, const TableColumn &, int /*row*/) {}
    /// Whether the text that the user typed may become the attribute's value; may change it first.
    virtual bool tableViewValidateValue(TableView &, QVariant & /*value*/, const TableColumn &, int /*row*/)
    {
        return true;
    }
    /// An accepted value becomes the record's attribute; by default at once, through the array controller.
    virtual void tableViewSetObjectValue(TableView &tableView, const QVariant &value,
                                         const TableColumn &column, int row);

    /// Writes what is dragged when \a rows are; false if they cannot be dragged. Whoever declares
    /// PasteboardType::filesPromise is asked for the files once they are dropped outside of this process.
    virtual bool tableViewWriteRowsWithIndexesToPasteboard(TableView &, const QList<int> & /*rows*/,
                                                           Pasteboard &)
    {
        return false;
    }
    /// Writes the files that were promised for \a rows into the folder \a dropDestination and returns their
    /// names. Called at most once for each drop.
    virtual QStringList tableViewNamesOfPromisedFilesDroppedAtDestination(TableView &,
                                                                          const QUrl & /*dropDestination*/,
                                                                          const QList<int> & /*rows*/)
    {
        return {};
    }
    /// The name under which the promised file of \a row will probably be written, for programs that want to
    /// know before they say where. Empty: the text of the row with the promised extension.
    virtual QString tableViewProbableNameOfPromisedFile(TableView &, int /*row*/) { return {}; }
    /// What dropping there would do; DragOperation::None refuses. Asked again for every step of the drag.
    virtual DragOperations tableViewValidateDrop(TableView &, const DraggingInfo &, int /*proposedRow*/,
                                                 TableDropOperation)
    {
        return DragOperation::None;
    }
    /// Whether the drop was taken. Rows are added, moved and removed by whoever answers, never by the view.
    virtual bool tableViewAcceptDrop(TableView &, const DraggingInfo &, int /*row*/, TableDropOperation)
    {
        return false;
    }
};

/// A list of records with a single selection, which is the array controller's, editing in place, and drags
/// from and to it.
class TableView final : public QTreeView
{
public:
    explicit TableView(QWidget *parent = nullptr);

    void setColumns(const QList<TableColumn> &columns);
    const QList<TableColumn> &columns() const { return columns_; }
    /// Not owned, and may be null; has to outlive the view or be replaced.
    void setDelegate(TableViewDelegate *delegate);
    TableViewDelegate *delegate() const { return delegate_; }
    /// Not owned.
    void setController(ArrayController *controller);
    ArrayController *controller() const;

    int selectedRow() const;
    /// Starts editing with the whole text selected.
    void editColumn(const QString &identifier, int row);
    /// Keeps what was typed so far.
    void endEditing();
    bool isEditing() const;
    /// Shown while there are no rows.
    void setPlaceholderText(const QString &text);

    /// Only drags that bring one of these types may be dropped.
    void registerForDraggedTypes(const QStringList &types) { dragging_.registerForDraggedTypes(types); }
    /// What may be done with a dragged row: in this process (everything at first), in others (nothing).
    void setDraggingSourceOperationMask(DragOperations mask, bool forLocal)
    {
        dragging_.setDraggingSourceOperationMask(mask, forLocal);
    }

protected:
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void initViewItemOption(QStyleOptionViewItem *option) const override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    bool edit(const QModelIndex &index, EditTrigger trigger, QEvent *event) override;

private:
    int firstEditableColumn() const;
    void showSelection();

    struct DropPlace
    {
        int row;
        TableDropOperation operation;
        QRect indicator;
    };
    DropPlace dropPlaceAt(const QPoint &point) const;
    DragOperations validate(const QDropEvent &event, const DropPlace &place);
    std::shared_ptr<PromisedFile> promiseOf(int row, const Pasteboard &pasteboard);
    QString writePromisedFile(const std::shared_ptr<KeyValueCoding> &record, const QUrl &folder);

    QList<TableColumn> columns_;
    TableViewDelegate *delegate_ = nullptr;
    QPointer<ArrayController> controller_;
    TableViewModel *model_;
    EditingDelegate *editing_;
    ViewDragging dragging_{*this};
    QString placeholderText_;
    /// Rows come or go: what the view does to its selection meanwhile is not the user's choice.
    bool rowsAreChanging_ = false;
};
