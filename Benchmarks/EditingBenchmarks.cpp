// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// From one edit to the painted view, in the pane's outline of a preset of so many items, all expanded; and
// from the selection of that preset. Compare <PaneTree, …>/N with <StandardTree, …>/N of the same run, which
// does the same to the same rows in a bare QStandardItemModel and QTreeView. The pane's figures include
// finding unique names, the history, and showing the selected item's attributes.

#include "Benchmarks/PaintWatch.h"
#include "Benchmarks/PaneTree.h"
#include "Benchmarks/PeakMemory.h"
#include "Benchmarks/SamplePresets.h"
#include "Benchmarks/StandardTree.h"

#include <QCoreApplication>
#include <QPixmap>
#include <benchmark/benchmark.h>

namespace {

/// Folders of ten entries, or all files in one folder.
enum class Shape : std::uint8_t { Folders, Flat };

QNBPresetRecordPtr sample(Shape shape, qsizetype items)
{
    return shape == Shape::Folders ? SamplePresets::presets(items, items).constFirst()
                                   : SamplePresets::flatPreset(items);
}

/// The one tree on screen, kept from one benchmark to the next that wants the same.
class Stage
{
public:
    template <class Tree>
    static Stage &with(Shape shape, qsizetype items)
    {
        static const bool willBeStruck = [] {
            // Widgets have to go before the application does.
            qAddPostRoutine([] { current_.reset(); });
            return true;
        }();
        Q_UNUSED(willBeStruck)
        if (!current_ || !dynamic_cast<Tree *>(current_->tree_.get()) || current_->shape_ != shape ||
            current_->items_ != items) {
            current_.reset();
            current_ = std::make_unique<Stage>(std::make_unique<Tree>(sample(shape, items)), shape, items);
        }
        return *current_;
    }

    Stage(std::unique_ptr<EditedTree> tree, Shape shape, qsizetype items)
        : tree_(std::move(tree))
        , watch_(tree_->view())
        , shape_(shape)
        , items_(items)
    {
        paint([this] { tree_->showExpanded(); });
    }

    EditedTree &tree() { return *tree_; }

    /// Does it, until it is painted.
    template <class Action>
    bool paint(const Action &action)
    {
        watch_.begin();
        action();
        return watch_.waitUntilPainted();
    }

private:
    inline static std::unique_ptr<Stage> current_;

    std::unique_ptr<EditedTree> tree_;
    PaintWatch watch_;
    Shape shape_;
    qsizetype items_;
};

int numberOfSiblings(const QModelIndex &index)
{
    return index.model()->rowCount(index.parent());
}

/// Edits and takes back; only the former counts. \a isShown looks whether the view shows the edit.
template <class Tree, Shape shape, class Edit, class IsShown>
void measure(benchmark::State &state, const Edit &edit, const IsShown &isShown)
{
    Stage &stage = Stage::with<Tree>(shape, state.range(0));
    EditedTree &tree = stage.tree();
    for (auto _ : state) {
        const bool isPainted = stage.paint([&] { edit(tree); });
        state.PauseTiming();
        if (!isPainted || !isShown(tree.view())) {
            state.SkipWithError("the edit is not shown");
            break;
        }
        stage.paint([&] { tree.restore(); });
        state.ResumeTiming();
    }
}

template <class Tree, Shape shape>
void BM_Insert(benchmark::State &state)
{
    const int before =
        numberOfSiblings(Stage::with<Tree>(shape, state.range(0)).tree().view().currentIndex());
    measure<Tree, shape>(
        state, [](EditedTree &tree) { tree.insert(); },
        [before](const QTreeView &view) {
            return numberOfSiblings(view.currentIndex()) == before + 1 &&
                   view.currentIndex().data().toString().startsWith(QStringLiteral("Untitled"));
        });
}

template <class Tree, Shape shape>
void BM_Rename(benchmark::State &state)
{
    const QString name = QStringLiteral("Renamed");
    measure<Tree, shape>(
        state, [&](EditedTree &tree) { tree.rename(name); },
        [&](const QTreeView &view) { return view.currentIndex().data() == name; });
}

template <class Tree, Shape shape>
void BM_Color(benchmark::State &state)
{
    const auto rowImage = [](const QTreeView &view) {
        return view.viewport()->grab(view.visualRect(view.currentIndex())).toImage();
    };
    const QImage before = rowImage(Stage::with<Tree>(shape, state.range(0)).tree().view());
    measure<Tree, shape>(
        state, [](EditedTree &tree) { tree.color(); },
        [&](const QTreeView &view) { return rowImage(view) != before; });
}

template <class Tree, Shape shape>
void BM_Remove(benchmark::State &state)
{
    const QModelIndex edited = Stage::with<Tree>(shape, state.range(0)).tree().view().currentIndex();
    const QPersistentModelIndex parent = edited.parent();
    const int before = numberOfSiblings(edited);
    measure<Tree, shape>(
        state, [](EditedTree &tree) { tree.remove(); },
        [&](const QTreeView &view) { return view.model()->rowCount(parent) == before - 1; });
}

template <class Tree, Shape shape>
void BM_Move(benchmark::State &state)
{
    const QVariant name = Stage::with<Tree>(shape, state.range(0)).tree().view().currentIndex().data();
    measure<Tree, shape>(
        state, [](EditedTree &tree) { tree.move(); },
        [&](const QTreeView &view) { return view.model()->index(0, 0).data() == name; });
}

template <class Tree, Shape shape>
void BM_Show(benchmark::State &state)
{
    Stage &stage = Stage::with<Tree>(shape, state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        stage.paint([&] { stage.tree().hideRows(); });
        state.ResumeTiming();
        const bool isPainted = stage.paint([&] { stage.tree().showExpanded(); });
        state.PauseTiming();
        const QTreeView &view = stage.tree().view();
        if (!isPainted || view.visualRect(view.currentIndex()).isEmpty()) {
            state.SkipWithError("not all rows are shown");
            break;
        }
        state.ResumeTiming();
    }
}

/// The bytes of memory that a row takes on screen: in the pane on top of the preset's tree, in the other case
/// with the item model, which is the tree.
template <class Tree>
void BM_MemoryOfRows(benchmark::State &state)
{
    const QNBPresetRecordPtr preset = sample(Shape::Folders, state.range(0));
    for (auto _ : state) {
        const PeakMemory memoryOfAll;
        Tree tree(preset);
        PaintWatch watch(tree.view());
        watch.waitUntilPainted();
        const PeakMemory memoryOfRows;
        tree.showExpanded();
        watch.begin();
        tree.view().viewport()->update();
        watch.waitUntilPainted();
        const bool isOnTopOfTree = std::is_same_v<Tree, PaneTree>;
        const qint64 bytes = isOnTopOfTree ? memoryOfRows.current() : memoryOfAll.current();
        state.counters["bytes_per_row"] = double(bytes) / double(state.range(0));
    }
}

} // namespace

#define QUENBY_SIZES Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond)
#define QUENBY_EDITS(Tree, shape)                                                                            \
    BENCHMARK_TEMPLATE(BM_Insert, Tree, shape)->QUENBY_SIZES;                                                \
    BENCHMARK_TEMPLATE(BM_Rename, Tree, shape)->QUENBY_SIZES;                                                \
    BENCHMARK_TEMPLATE(BM_Color, Tree, shape)->QUENBY_SIZES;                                                 \
    BENCHMARK_TEMPLATE(BM_Remove, Tree, shape)->QUENBY_SIZES;                                                \
    BENCHMARK_TEMPLATE(BM_Move, Tree, shape)->QUENBY_SIZES;                                                  \
    BENCHMARK_TEMPLATE(BM_Show, Tree, shape)->QUENBY_SIZES
QUENBY_EDITS(StandardTree, Shape::Folders);
QUENBY_EDITS(PaneTree, Shape::Folders);
QUENBY_EDITS(StandardTree, Shape::Flat);
QUENBY_EDITS(PaneTree, Shape::Flat);
BENCHMARK_TEMPLATE(BM_MemoryOfRows, StandardTree)->Arg(100'000)->Iterations(1);
BENCHMARK_TEMPLATE(BM_MemoryOfRows, PaneTree)->Arg(100'000)->Iterations(1);
