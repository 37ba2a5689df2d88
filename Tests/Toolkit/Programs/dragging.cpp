// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// A program with a table and an outline side by side, for drags between programs and within one.
//
// usage: quenby-dragging [--at X,Y] [--meanwhile destroy|remove|orphan]
//
// A window without a frame at X,Y, 400 pixels wide and 200 high: a table of the records alpha, beta and gamma
// on the left, of which each promises a file when it is dragged, and an outline of a/b and c on the right.
// --meanwhile does something to the table soon after a drag has begun there: destroys it, removes the record
// that is dragged, or takes its delegate away.
//
// One line is printed for each thing that happens:
//   rows TOP HEIGHT           where the rows are, once the window is there
//   drag LABEL                a record or an item begins to be dragged
//   forgotten                 the data of the drag that began last have gone
//   meanwhile                 what --meanwhile asks for was done
//   promise LABEL FOLDER      a promised file is written into FOLDER, as LABEL.txt
//   allow above|on ROW MASK   a drop may go there; only when this differs from the last
//   refuse above|on ROW       a drop may not go there; the same
//   move LABEL ROW            a record was dropped before ROW
//   import ROW PATH...        files were dropped before ROW
//   place LABEL ITEM INDEX    an item was dropped on ITEM, "-" for none, as the child INDEX
//   click                     the mouse was clicked on the window beside the views

#include "Tests/Toolkit/FakeRecord.h"
#include "Tests/Toolkit/FakeTree.h"
#include "Toolkit/ArrayController.h"
#include "Toolkit/OutlineView.h"
#include "Toolkit/TableView.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QDrag>
#include <QFile>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QTextStream>
#include <QTimer>

namespace {

const QString rowType = QStringLiteral("RowType");
const QString itemType = QStringLiteral("ItemType");
const QString destroyView = QStringLiteral("destroy");
const QString removeRecord = QStringLiteral("remove");
const QString removeDelegate = QStringLiteral("orphan");
constexpr int delayInMilliseconds = 100;

void print(const QStringList &words)
{
    QTextStream(stdout) << words.join(u' ') << Qt::endl;
}

QString nameOf(TableDropOperation operation)
{
    return operation == TableDropOperation::On ? QStringLiteral("on") : QStringLiteral("above");
}

class Records final : public TableViewDelegate
{
public:
    ArrayController controller;
    std::function<void()> meanwhile;

    Records()
    {
        for (const QString &label :
             {QStringLiteral("alpha"), QStringLiteral("beta"), QStringLiteral("gamma")})
            controller.addObject(FakeRecord::labelled(label));
    }

    bool tableViewWriteRowsWithIndexesToPasteboard(TableView &, const QList<int> &rows,
                                                   Pasteboard &pasteboard) override
    {
        pasteboard.declareTypes({PasteboardType::filesPromise, rowType});
        pasteboard.setPropertyListForType(QVariantList{QStringLiteral("txt")}, PasteboardType::filesPromise);
        pasteboard.setDataForType(QByteArray::number(rows.constFirst()), rowType);
        print({QStringLiteral("drag"), label(rows.constFirst())});
        QTimer::singleShot(0, qApp, [] {
            if (const QDrag *drag = qApp->findChild<QDrag *>())
                QObject::connect(drag, &QObject::destroyed, qApp,
                                 [] { print({QStringLiteral("forgotten")}); });
        });
        if (meanwhile)
            QTimer::singleShot(delayInMilliseconds, qApp, meanwhile);
        return true;
    }
    QStringList tableViewNamesOfPromisedFilesDroppedAtDestination(TableView &, const QUrl &dropDestination,
                                                                  const QList<int> &rows) override
    {
        const QString text = label(rows.constFirst());
        print({QStringLiteral("promise"), text, dropDestination.toLocalFile()});
        QFile file(QDir(dropDestination.toLocalFile()).filePath(text + QStringLiteral(".txt")));
        if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
            return {};
        return {text + QStringLiteral(".txt")};
    }
    DragOperations tableViewValidateDrop(TableView &, const DraggingInfo &info, int proposedRow,
                                         TableDropOperation operation) override
    {
        const bool isAllowed = operation == TableDropOperation::Above;
        QStringList answer{isAllowed ? QStringLiteral("allow") : QStringLiteral("refuse"), nameOf(operation),
                           QString::number(proposedRow)};
        if (isAllowed)
            answer.append(QString::number(info.draggingSourceOperationMask().toInt()));
        if (answer != lastAnswer_)
            print(answer);
        lastAnswer_ = answer;
        return isAllowed ? DragOperation::Move : DragOperation::None;
    }
    bool tableViewAcceptDrop(TableView &, const DraggingInfo &info, int row, TableDropOperation) override
    {
        const Pasteboard &pasteboard = info.draggingPasteboard();
        if (pasteboard.isFromThisProcess())
            print({QStringLiteral("move"), label(pasteboard.dataForType(rowType).toInt()),
                   QString::number(row)});
        else
            print(QStringList{QStringLiteral("import"), QString::number(row)} +
                  pasteboard.propertyListForType(PasteboardType::filenames).toStringList());
        return true;
    }

private:
    QString label(int row) const
    {
        return controller.arrangedObjects().at(row)->valueForKey(labelKey).toString();
    }

    QStringList lastAnswer_;
};

class Items final : public FakeTree
{
public:
    Items()
    {
        root->add(QStringLiteral("a"))->add(QStringLiteral("b"));
        root->add(QStringLiteral("c"));
    }

    bool outlineViewWriteItemsToPasteboard(OutlineView &, const QList<OutlineItem> &items,
                                           Pasteboard &pasteboard) override
    {
        pasteboard.declareTypes({itemType});
        pasteboard.setDataForType(name(items.constFirst()).toUtf8(), itemType);
        print({QStringLiteral("drag"), name(items.constFirst())});
        return true;
    }
    DragOperations outlineViewValidateDrop(OutlineView &, const DraggingInfo &, const OutlineItem &,
                                           int) override
    {
        return DragOperation::Every;
    }
    bool outlineViewAcceptDrop(OutlineView &, const DraggingInfo &info, const OutlineItem &item,
                               int childIndex) override
    {
        print({QStringLiteral("place"), QString::fromUtf8(info.draggingPasteboard().dataForType(itemType)),
               item ? name(item) : QStringLiteral("-"), QString::number(childIndex)});
        return true;
    }

private:
    static QString name(const OutlineItem &item) { return static_cast<const Node *>(item.get())->name; }
};

class Window final : public QWidget
{
public:
    Window()
        : QWidget(nullptr, Qt::BypassWindowManagerHint)
    {
    }

protected:
    void mouseReleaseEvent(QMouseEvent *) override { print({QStringLiteral("click")}); }
};

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QCommandLineOption at(QStringLiteral("at"), {}, QStringLiteral("X,Y"), QStringLiteral("0,0"));
    const QCommandLineOption meanwhile(QStringLiteral("meanwhile"), {}, QStringLiteral("WHAT"));
    QCommandLineParser parser;
    parser.addOptions({at, meanwhile});
    parser.process(application);

    Records records;
    Items items;
    Window window;
    auto *table = new TableView;
    table->setColumns({{.identifier = labelKey, .key = labelKey, .isEditable = true}});
    table->setDelegate(&records);
    table->setController(&records.controller);
    table->registerForDraggedTypes({PasteboardType::filenames, rowType});
    table->setDraggingSourceOperationMask(DragOperation::Copy, false);
    auto *outline = new OutlineView;
    outline->setDataSource(&items);
    outline->expandItem({}, true);
    outline->registerForDraggedTypes({itemType});

    const QString what = parser.value(meanwhile);
    if (!what.isEmpty()) {
        records.meanwhile = [&records, table, what] {
            if (what == destroyView)
                delete table;
            else if (what == removeRecord)
                records.controller.remove();
            else if (what == removeDelegate)
                table->setDelegate(nullptr);
            print({QStringLiteral("meanwhile")});
        };
    }

    auto *layout = new QHBoxLayout(&window);
    layout->addWidget(table);
    layout->addWidget(outline);
    const QStringList position = parser.value(at).split(u',');
    window.setGeometry(position.value(0).toInt(), position.value(1).toInt(), 400, 200);
    window.show();
    QCoreApplication::processEvents();
    const QRect row = table->visualRect(table->model()->index(0, 0));
    print({QStringLiteral("rows"), QString::number(table->viewport()->mapTo(&window, row.topLeft()).y()),
           QString::number(row.height())});
    const int result = QApplication::exec();
    outline->setDataSource(nullptr);
    return result;
}
