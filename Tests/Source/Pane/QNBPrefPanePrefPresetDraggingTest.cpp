// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PresetListFixture.h"

#include "Source/Pane/QNBPresetListNames.h"

#include <QDropEvent>

namespace {

enum class Place { Top, Middle, Bottom };

/// The drags of the list as events of its window.
class QNBPrefPanePrefPresetDragging : public PresetListFixture
{
protected:
    QPoint pointAt(int row, Place place) const
    {
        const QRect cell = list().visualRect(list().model()->index(row, 1));
        const int y = place == Place::Top ? cell.top() : cell.bottom();
        return {cell.center().x(), place == Place::Middle ? cell.center().y() : y};
    }

    /// Drags over that place and lets go there; whether the drop was taken.
    bool drop(const QMimeData &data, int row, Place place, Qt::KeyboardModifiers modifiers = {})
    {
        const QPoint point = pointAt(row, place);
        const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
        QDragEnterEvent enter(point, offered, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(list().viewport(), &enter);
        if (!enter.isAccepted())
            return false;
        QDragMoveEvent move(point, offered, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(list().viewport(), &move);
        if (!move.isAccepted()) {
            QDragLeaveEvent leave;
            QCoreApplication::sendEvent(list().viewport(), &leave);
            return false;
        }
        QDropEvent drop(point, offered, &data, Qt::LeftButton, modifiers);
        QCoreApplication::sendEvent(list().viewport(), &drop);
        return drop.isAccepted();
    }
};

} // namespace

TEST_F(QNBPrefPanePrefPresetDragging, DroppingADraggedRowOntoARowIsRefused)
{
    EXPECT_FALSE(drop(*dragOfRow(0), 1, Place::Middle));
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefPresetDragging, ARowDroppedBelowTheLastOneIsLast)
{
    EXPECT_TRUE(drop(*dragOfRow(0), 2, Place::Bottom));
    EXPECT_EQ(labels(), QStringList({b, c, a}));
    EXPECT_EQ(list().selectedRow(), 2);
}

TEST_F(QNBPrefPanePrefPresetDragging, ARowDroppedAboveTheFirstOneIsFirst)
{
    EXPECT_TRUE(drop(*dragOfRow(2), 0, Place::Top));
    EXPECT_EQ(labels(), QStringList({c, a, b}));
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefPresetDragging, ARowDroppedJustBelowItselfStays)
{
    EXPECT_TRUE(drop(*dragOfRow(1), 1, Place::Bottom));
    EXPECT_FALSE(drop(*dragOfRow(1), 1, Place::Top));
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefPresetDragging, ARowIsNotCopied)
{
    EXPECT_FALSE(drop(*dragOfRow(0), 2, Place::Bottom, Qt::ControlModifier));
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefPresetDragging, FilesDroppedAboveTheFirstRowStandInReverseOrder)
{
    const QStringList files{presetFile(QStringLiteral("X.qnbp")), presetFile(QStringLiteral("Y.qnbp")),
                            presetFile(QStringLiteral("Z.qnbp"))};
    EXPECT_TRUE(drop(*dragOfFiles(files), 0, Place::Top));
    EXPECT_EQ(labels(),
              QStringList({QStringLiteral("Z"), QStringLiteral("Y"), QStringLiteral("X"), a, b, c}));
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefPresetDragging, OtherTypesAndForeignRowsAreRefused)
{
    QMimeData text;
    text.setText(a);
    EXPECT_FALSE(drop(text, 0, Place::Top));
    QMimeData foreign;
    foreign.setData(QNBRowIndexDragType, dragOfRow(0)->data(QNBRowIndexDragType));
    EXPECT_FALSE(drop(foreign, 2, Place::Bottom));
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}

TEST_F(QNBPrefPanePrefPresetDragging, ARowThatIsNoArchiveIsRefusedWhenItIsDropped)
{
    const auto data = dragOfRow(0);
    Pasteboard(*data).setDataForType("no archive", QNBRowIndexDragType);
    EXPECT_FALSE(drop(*data, 2, Place::Bottom));
    EXPECT_EQ(labels(), QStringList({a, b, c}));
}
