// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PresetListFixture.h"

#include "Platform/PropertyLists/KeyedUnarchiver.h"
#include "Source/Pane/QNBPresetListNames.h"
#include "Toolkit/ArrayController.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>
#include <limits>

namespace {

const QString justUndo = QStringLiteral("&Undo");

class QNBPrefPanePrefTableViewDelegate : public PresetListFixture
{
protected:
    QStringList filesIn(const QString &folder) const { return QDir(folder).entryList(QDir::Files); }
    QVariantMap archiveAt(const QString &file) const
    {
        const PropertyListDocument::Ptr document = KeyedUnarchiver::unarchivedDocumentWithFile(file, nullptr);
        return document ? document->root().toVariant().toMap() : QVariantMap();
    }
};

} // namespace

TEST_F(QNBPrefPanePrefTableViewDelegate, ADragDeclaresThePromiseFirstThenTheRow)
{
    QMimeData data;
    Pasteboard pasteboard(data);
    EXPECT_TRUE(pane->tableViewWriteRowsWithIndexesToPasteboard(list(), {2, 1}, pasteboard));
    EXPECT_EQ(pasteboard.types(),
              QStringList({PasteboardType::filesPromise, QStringLiteral("QNBRowIndexDragType")}));
    EXPECT_EQ(pasteboard.propertyListForType(PasteboardType::filesPromise),
              QVariant(QVariantList{QStringLiteral("qnbp")}));
    const QVariant index = KeyedUnarchiver::unarchiveObject(pasteboard.dataForType(QNBRowIndexDragType))
                               .value.value_or(QVariant());
    EXPECT_EQ(index, QVariant(2LL)) << "the first row of those that are dragged";
    EXPECT_TRUE(pasteboard.isFromThisProcess());
}

TEST_F(QNBPrefPanePrefTableViewDelegate, DroppingADraggedRowOntoARowIsRefused)
{
    EXPECT_EQ(validate(*dragOfRow(0), TableDropOperation::On), DragOperation::None);
    EXPECT_EQ(validate(*dragOfFiles({home.path()}), TableDropOperation::On), DragOperation::None);
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ADropBetweenRowsMovesRowsAndFilesAndNothingElse)
{
    EXPECT_EQ(validate(*dragOfRow(0)), DragOperation::Move);
    EXPECT_EQ(validate(*dragOfFiles({home.path()})), DragOperation::Move);
    QMimeData text;
    text.setText(a);
    EXPECT_EQ(validate(text), DragOperation::None);
}

TEST_F(QNBPrefPanePrefTableViewDelegate, MovingRow0OfThreeToDropRow3PutsItLast)
{
    const QNBPresetRecordPtr moved = record(0);
    EXPECT_TRUE(accept(*dragOfRow(0), 3));
    EXPECT_EQ(labels(), QStringList({b, c, a}));
    EXPECT_EQ(record(2), moved);
    EXPECT_EQ(list().selectedRow(), 2);
    EXPECT_EQ(stepToTakeBack(), u"&Undo Move Preset");
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(record(0), moved);
    EXPECT_EQ(list().selectedRow(), 0);
    EXPECT_EQ(stepToTakeBack(), justUndo) << "it was one step";
    pane->redo();
    EXPECT_EQ(labels(), QStringList({b, c, a}));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, MovingRow2ToDropRow0PutsItFirst)
{
    EXPECT_TRUE(accept(*dragOfRow(2), 0));
    EXPECT_EQ(labels(), QStringList({c, a, b}));
    EXPECT_EQ(outlineRows(), QStringList(QStringLiteral("of C"))) << "the moved one is selected";
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, DroppingRow1AtDropRow2LeavesTheOrderUnchangedButIsAccepted)
{
    QSignalSpy removed(&controller(), &ArrayController::objectRemoved);
    QSignalSpy inserted(&controller(), &ArrayController::objectInserted);
    EXPECT_TRUE(accept(*dragOfRow(1), 2));
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(removed.count(), 1) << "it is performed all the same";
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(list().selectedRow(), 1);
    EXPECT_EQ(stepToTakeBack(), justUndo) << "there is nothing to take back";
}

TEST_F(QNBPrefPanePrefTableViewDelegate, AReorderToTheRowsOwnIndexIsRefused)
{
    QSignalSpy removed(&controller(), &ArrayController::objectRemoved);
    EXPECT_FALSE(accept(*dragOfRow(1), 1));
    EXPECT_EQ(removed.count(), 0);
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(stepToTakeBack(), justUndo);
}

TEST_F(QNBPrefPanePrefTableViewDelegate, EveryRowMovesToEveryPlaceAndBack)
{
    for (int from = 0; from < 3; ++from) {
        for (int row = 0; row <= 3; ++row) {
            QStringList expected{a, b, c};
            expected.move(from, from < row ? row - 1 : row);
            const bool leavesAStep = expected != QStringList({a, b, c});
            EXPECT_EQ(accept(*dragOfRow(from), row), from != row);
            EXPECT_EQ(labels(), expected) << from << " at " << row;
            if (leavesAStep)
                pane->undo();
            EXPECT_EQ(labels(), QStringList({a, b, c})) << from << " at " << row;
            EXPECT_EQ(stepToTakeBack(), justUndo);
        }
    }
}

TEST_F(QNBPrefPanePrefTableViewDelegate, AReorderNeedsASourceThatMovesOrLinks)
{
    EXPECT_FALSE(accept(*dragOfRow(0), 3, DragOperation::Copy));
    EXPECT_FALSE(accept(*dragOfRow(0), 3, DragOperation::Generic));
    EXPECT_FALSE(accept(*dragOfRow(0), 3, DragOperation::None));
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_TRUE(accept(*dragOfRow(0), 3, DragOperation::Link));
    EXPECT_EQ(labels(), QStringList({b, c, a}));
    EXPECT_TRUE(accept(*dragOfRow(0), 3, DragOperation::Copy | DragOperation::Move));
    EXPECT_EQ(labels(), QStringList({c, a, b}));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ARowFromASourceThatOnlyCopiesIsImportedIfItBringsFiles)
{
    const auto data = dragOfRow(0);
    data->setUrls({QUrl::fromLocalFile(presetFile(QStringLiteral("New.qnbp")))});
    EXPECT_TRUE(accept(*data, 3, DragOperation::Copy));
    EXPECT_EQ(labels(), QStringList({a, b, c, QStringLiteral("New")}));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, AMovedPresetKeepsItsOutlineAsItIs)
{
    QSignalSpy reset(outline().model(), &QAbstractItemModel::modelReset);
    QSignalSpy selection(&controller(), &ArrayController::selectionChanged);
    EXPECT_TRUE(accept(*dragOfRow(0), 3));
    EXPECT_EQ(reset.count(), 0);
    EXPECT_EQ(selection.count(), 0) << "the same preset is selected";
    EXPECT_EQ(outlineRows(), QStringList(QStringLiteral("of A")));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ADropKeepsWhatIsBeingTyped)
{
    list().editColumn(QNBPresetKey::label, 0);
    QTest::keyClicks(list().viewport()->findChild<QWidget *>(), QStringLiteral("Typed"));
    EXPECT_TRUE(accept(*dragOfRow(0), 3));
    EXPECT_EQ(labels(), QStringList({b, c, QStringLiteral("Typed")}));
    pane->undo();
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ExportWritesTheRecordWithItsTreeAsADictionary)
{
    const QVariantMap before = record(1)->toStored();
    record(1)->setValueForKey(QStringLiteral("kept"), QStringLiteral("extra"));
    EXPECT_EQ(drag(1, home.path()), QStringList(QStringLiteral("B.qnbp")));
    const QVariantMap archive = archiveAt(path(QStringLiteral("B.qnbp")));
    EXPECT_EQ(archive, record(1)->toStored());
    EXPECT_EQ(archive.value(QNBPresetKey::fileHierarchy), before.value(QNBPresetKey::fileHierarchy));
    EXPECT_EQ(archive.value(QStringLiteral("extra")), QVariant(QStringLiteral("kept")));
    EXPECT_TRUE(record(1)->fileHierarchy()) << "the record itself keeps its tree";
    EXPECT_EQ(stepToTakeBack(), justUndo);
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ALabelOfUnsafeCharactersOnlyExportsAsQNBPreset)
{
    controller().setValueForKey(QStringLiteral("/:~/"), QNBPresetKey::label, 0);
    EXPECT_EQ(drag(0, home.path()), QStringList(QStringLiteral("QNB Preset.qnbp")));
    EXPECT_TRUE(QFile::exists(path(QStringLiteral("QNB Preset.qnbp"))));
    EXPECT_EQ(pane->tableViewProbableNameOfPromisedFile(list(), 0), u"QNB Preset.qnbp");
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ExportingTheSamePresetTwiceLeavesOneFileTheLaterWrite)
{
    QDir().mkpath(path(QStringLiteral("out")));
    drag(0, path(QStringLiteral("out")));
    record(0)->fileHierarchy()->childAtIndex(0)->setFilename(QStringLiteral("later"));
    drag(0, path(QStringLiteral("out")));
    EXPECT_EQ(filesIn(path(QStringLiteral("out"))), QStringList(QStringLiteral("A.qnbp")));
    EXPECT_EQ(archiveAt(path(QStringLiteral("out/A.qnbp"))), record(0)->toStored());
}

TEST_F(QNBPrefPanePrefTableViewDelegate, AFailedExportNamesTheFileAllTheSameAndSaysNothing)
{
    EXPECT_EQ(drag(0, path(QStringLiteral("absent"))), QStringList(QStringLiteral("A.qnbp")));
    EXPECT_TRUE(alerts.isEmpty());
}

TEST_F(QNBPrefPanePrefTableViewDelegate, NoFileIsWrittenForARowThatIsGoneOrAPlaceThatIsNoFolder)
{
    for (const int row : {-1, 3, std::numeric_limits<int>::max()})
        EXPECT_TRUE(drag(row, home.path()).isEmpty()) << row;
    EXPECT_EQ(pane->tableViewNamesOfPromisedFilesDroppedAtDestination(
                  list(), QUrl(QStringLiteral("https://quenby.example/")), {0}),
              QStringList(QStringLiteral("A.qnbp")))
        << "a failed write keeps its name";
    EXPECT_TRUE(filesIn(home.path()).isEmpty());
    EXPECT_FALSE(QFile::exists(QStringLiteral("A.qnbp")));
    EXPECT_TRUE(pane->tableViewProbableNameOfPromisedFile(list(), 3).isEmpty());
}

TEST_F(QNBPrefPanePrefTableViewDelegate, OfSeveralRowsTheFirstIsExported)
{
    QDir().mkpath(path(QStringLiteral("out")));
    EXPECT_EQ(pane->tableViewNamesOfPromisedFilesDroppedAtDestination(
                  list(), QUrl::fromLocalFile(path(QStringLiteral("out"))), {1, 2}),
              QStringList(QStringLiteral("B.qnbp")));
    EXPECT_EQ(filesIn(path(QStringLiteral("out"))), QStringList(QStringLiteral("B.qnbp")));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, TheColumnDragHandleShowsTheImageAndNoOtherDoes)
{
    const TableColumn handle{.identifier = QStringLiteral("drag_handle")};
    ViewCell cell;
    pane->tableViewWillDisplayCell(list(), cell, handle, 0);
    EXPECT_FALSE(cell.image.isNull());
    EXPECT_EQ(cell.image.cacheKey(), pane->imageNamed(QStringLiteral("DragHandle")).cacheKey());
    const TableColumn label{.identifier = QNBPresetKey::label};
    ViewCell other;
    pane->tableViewWillDisplayCell(list(), other, label, 0);
    EXPECT_TRUE(other.image.isNull());
}

TEST_F(QNBPrefPanePrefTableViewDelegate, EveryRowStartsWithTheDragHandle)
{
    ASSERT_EQ(list().columns().size(), 2);
    EXPECT_EQ(list().columns().constFirst().identifier, u"drag_handle");
    EXPECT_LT(list().columnWidth(0), list().columnWidth(1));
    for (int row = 0; row < 3; ++row) {
        const QModelIndex handle = list().model()->index(row, 0);
        EXPECT_FALSE(handle.data(Qt::DecorationRole).value<QIcon>().isNull()) << row;
        EXPECT_FALSE(handle.flags() & Qt::ItemIsEditable) << row;
        EXPECT_EQ(handle.data(Qt::AccessibleTextRole).toString(),
                  QStringLiteral("Drag handle of ") + record(row)->label());
        EXPECT_TRUE(handle.siblingAtColumn(1).data(Qt::DecorationRole).isNull()) << row;
    }
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ARenamedPresetIsOneStep)
{
    const QNBPresetRecordPtr renamed = record(1);
    for (const QString &odd : {QStringLiteral("%1 %n 'quoted' <b>&amp;</b>"), QStringLiteral("a/b:c~"),
                               QStringLiteral("\u202eright to left"), QStringLiteral("\U0001F4C1"),
                               QStringLiteral("two\nlines"), QString(5000, u'x')}) {
        pane->tableViewSetObjectValue(list(), odd, list().columns().constLast(), 1);
        EXPECT_EQ(renamed->label(), odd);
        EXPECT_EQ(stepToTakeBack(), u"&Undo Rename Preset");
        pane->undo();
        EXPECT_EQ(renamed->label(), b);
        EXPECT_EQ(stepToTakeBack(), justUndo);
        pane->redo();
        EXPECT_EQ(record(1)->label(), odd);
        pane->undo();
    }
}

TEST_F(QNBPrefPanePrefTableViewDelegate, AnIndexThatIsNoArchiveIsRefused)
{
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("0"), QByteArray("not an archive"), QByteArray("bplist00"),
          QByteArray(100000, '['), QByteArray("<plist version=\"1.0\"><integer>0</integer></plist>")}) {
        const auto data = dragOfRow(0);
        Pasteboard(*data).setDataForType(bytes, QNBRowIndexDragType);
        EXPECT_FALSE(accept(*data, 3)) << bytes.left(20).constData();
    }
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(stepToTakeBack(), justUndo);
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ANegativeHugeOrForeignIndexIsRefused)
{
    for (const QVariant &index :
         {QVariant(-1LL), QVariant(std::numeric_limits<qlonglong>::min()), QVariant(3LL), QVariant(1LL << 32),
          QVariant(std::numeric_limits<qlonglong>::max()), QVariant(std::numeric_limits<qulonglong>::max()),
          QVariant(0.0), QVariant(true), QVariant(QStringLiteral("0")), QVariant(QByteArray("0")),
          QVariant(QVariantList{0LL}), QVariant(QVariantMap{{QStringLiteral("index"), 0LL}})}) {
        EXPECT_FALSE(accept(*dragOfIndex(index), 2)) << index.typeName();
    }
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    EXPECT_EQ(stepToTakeBack(), justUndo);
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ADropRowThatTheListDoesNotHaveIsRefused)
{
    for (const int row : {-1, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()})
        EXPECT_FALSE(accept(*dragOfRow(1), row)) << row;
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, ARowThatWasRemovedMeanwhileIsRefused)
{
    const auto data = dragOfRow(2);
    controller().setSelectionIndex(2);
    controller().remove();
    EXPECT_FALSE(accept(*data, 0));
    EXPECT_EQ(labels(), QStringList({a, b}));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, TheRowOfAnotherProcessIsRefused)
{
    QMimeData foreign;
    foreign.setData(QNBRowIndexDragType, dragOfRow(0)->data(QNBRowIndexDragType));
    EXPECT_EQ(validate(foreign), DragOperation::None);
    EXPECT_FALSE(accept(foreign, 3));
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefTableViewDelegate, TheFilesThatAnotherProcessBringsWithItsRowAreImported)
{
    QMimeData foreign;
    foreign.setData(QNBRowIndexDragType, dragOfRow(0)->data(QNBRowIndexDragType));
    foreign.setUrls({QUrl::fromLocalFile(presetFile(QStringLiteral("New.qnbp")))});
    EXPECT_EQ(validate(foreign), DragOperation::Move);
    EXPECT_TRUE(accept(foreign, 1, DragOperation::Every));
    EXPECT_EQ(labels(), QStringList({a, QStringLiteral("New"), b, c}));
}
