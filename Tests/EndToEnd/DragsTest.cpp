// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/EditorFixture.h"

#include <QDir>

namespace {

/// What may be dropped where, with the mouse, beginning with the presets that the pane brings along.
class DragsTest : public EditorFixture
{
protected:
    void dragItem(const QString &name, QPoint to)
    {
        ASSERT_TRUE(user_.drags(pane_.item(name).center(), to, *host_)) << qPrintable(name);
    }
    void dragPreset(const QString &label, QPoint to)
    {
        ASSERT_TRUE(user_.drags(pane_.preset(label).center(), to, *host_)) << qPrintable(label);
    }
    void expectItems(const QStringList &items)
    {
        ASSERT_TRUE(waitUntil([&] { return pane_.items() == items; }))
            << qPrintable(pane_.items().join(u'\n'));
    }
    /// In the upper edge of a row, in its middle, in its lower edge.
    static QPoint above(const QRect &row) { return {row.center().x(), row.top()}; }
    static QPoint on(const QRect &row) { return row.center() + besideTheName; }
    static QPoint below(const QRect &row) { return QPoint(row.center().x(), row.bottom()) + besideTheName; }

    /// Far enough from the middle for a drag that ends in the row where it began.
    static constexpr QPoint besideTheName{30, 0};
};

} // namespace

TEST_F(DragsTest, ItemsGoIntoFoldersAndBetweenRowsButNotOntoFilesNorIntoThemselves)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    QStringList items = pane_.items();
    ASSERT_EQ(items.mid(0, 7), QStringList({QStringLiteral("Brief.md"), QStringLiteral("Administration"),
                                            QStringLiteral("Contracts"), QStringLiteral("Finance"),
                                            QStringLiteral("Invoice.html"), QStringLiteral("Time Sheet.csv"),
                                            QStringLiteral("Receipts")}));
    const QString finance = QStringLiteral("Finance");
    const QString contracts = QStringLiteral("Contracts");
    ASSERT_NO_FATAL_FAILURE(dragItem(finance, on(pane_.item(finance))));
    ASSERT_NO_FATAL_FAILURE(dragItem(finance, on(pane_.item(QStringLiteral("Receipts")))));
    ASSERT_NO_FATAL_FAILURE(dragItem(contracts, on(pane_.item(QStringLiteral("Invoice.html")))));
    EXPECT_EQ(pane_.items(), items);

    // The second child becomes the first, and stays open. What was dropped before has been dealt with by
    // then.
    ASSERT_NO_FATAL_FAILURE(dragItem(finance, above(pane_.item(contracts))));
    items.move(2, 6);
    ASSERT_NO_FATAL_FAILURE(expectItems(items));
    // To the top level, and into a folder.
    ASSERT_NO_FATAL_FAILURE(dragItem(contracts, above(pane_.item(QStringLiteral("Brief.md")))));
    items.move(6, 0);
    ASSERT_NO_FATAL_FAILURE(expectItems(items));
    ASSERT_NO_FATAL_FAILURE(dragItem(QStringLiteral("Meeting Notes.md"), on(pane_.item(contracts))));
    items.move(9, 1);
    ASSERT_NO_FATAL_FAILURE(expectItems(items));
    EXPECT_EQ(pane_.tree().mid(0, 3),
              QStringList({contracts, QStringLiteral("  Meeting Notes.md"), QStringLiteral("Brief.md")}));
}

TEST_F(DragsTest, PresetsGoBetweenRowsAndNotOntoThem)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    QStringList presets = pane_.presets();
    const QString first = presets.constFirst();
    ASSERT_NO_FATAL_FAILURE(dragPreset(first, on(pane_.preset(presets.at(2)))));
    ASSERT_NO_FATAL_FAILURE(dragPreset(presets.at(1), below(pane_.preset(presets.at(1)))));
    // Rows that are read one by one while the drop is dealt with are not all there.
    ASSERT_NO_FATAL_FAILURE(expectPresets(presets));

    ASSERT_NO_FATAL_FAILURE(dragPreset(first, below(pane_.preset(presets.constLast()))));
    presets.move(0, presets.size() - 1);
    ASSERT_NO_FATAL_FAILURE(expectPresets(presets));
    ASSERT_NO_FATAL_FAILURE(dragPreset(first, above(pane_.preset(presets.constFirst()))));
    presets.move(presets.size() - 1, 0);
    ASSERT_NO_FATAL_FAILURE(expectPresets(presets));
}

TEST_F(DragsTest, FilesOfPresetsComeInReverseOrder)
{
    ASSERT_NO_FATAL_FAILURE(openPane());
    const QStringList presets = pane_.presets();
    const QStringList exported = presets.mid(0, 3);
    const QString folder = session_.home().filePath(QStringLiteral("desktop"));
    ASSERT_TRUE(QDir().mkpath(folder));
    QStringList arguments{QStringLiteral("--at"),
                          QStringLiteral("%1,%2").arg(dropTargetPlace.x()).arg(dropTargetPlace.y()),
                          QStringLiteral("--into"), folder};
    for (const QString &label : exported)
        arguments << QStringLiteral("--offer") << QStringLiteral("%1/%2.qnbp").arg(folder, label);
    ChildProcess dropTarget(QStringLiteral(QUENBY_DROP_TARGET), arguments,
                            screen_.environmentFrom(session_.home().environment(session_.busAddress())));
    ASSERT_TRUE(waitUntil([&] { return dropTarget.output().contains("ready"); }));

    for (const QString &label : exported) {
        ASSERT_NO_FATAL_FAILURE(dragPreset(label, middleOfDropTarget));
        const QByteArray file = QStringLiteral("%1/%2.qnbp").arg(folder, label).toUtf8();
        ASSERT_TRUE(waitUntil([&] { return dropTarget.output().contains("copied " + file); }))
            << dropTarget.output().constData();
    }
    ASSERT_TRUE(user_.drags(middleOfDropTarget, above(pane_.preset(presets.constFirst())), dropTarget));
    ASSERT_NO_FATAL_FAILURE(
        expectPresets(QStringList({exported.at(2), exported.at(1), exported.at(0)}) + presets));
}
