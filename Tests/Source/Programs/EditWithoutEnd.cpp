// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// The pane with the user's own folders and somebody who edits without end, at random moments, until the
// program is killed. Restores what an earlier run has left. Each edit has a number, which is the first
// preset's label. Writes "starts NUMBER" for the number that it finds, and then for each edit its number and
// the time, nanoseconds of CLOCK_MONOTONIC.

#include "Source/Pane/QNBPrefPanePref.h"
#include "Toolkit/ArrayController.h"

#include <QApplication>
#include <QTimer>
#include <QTreeView>

#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace {

/// Has the latest restored, unless something was saved later, and whatever is older discarded.
class Restorer final : public PreferencePaneListener
{
public:
    void saved(const Result<> &) override {}
    void showNotice(const PaneNotice &notice) override
    {
        if (notice.kind != PaneNotice::Kind::Recovery)
            return;
        const bool isLatest = offers_.empty() && notice.actions.constFirst().title == u"Restore";
        offers_.push_back(isLatest ? notice.actions.constFirst().run : notice.actions.constLast().run);
    }
    void takeBackNotice(PaneNotice::Kind) override {}
    void accept()
    {
        // An answer may bring the next offer.
        for (std::size_t offer = 0; offer < offers_.size(); ++offer) {
            const std::function<void()> run = offers_.at(offer);
            run();
        }
    }

private:
    std::vector<std::function<void()>> offers_;
};

long long now()
{
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time).count();
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::mt19937 random{std::random_device()()};
    const auto pick = [&random](int count) { return std::uniform_int_distribution(0, count - 1)(random); };

    Restorer restorer;
    QNBPrefPanePref pane;
    pane.setListener(&restorer);
    const std::unique_ptr<QWidget> view(pane.loadMainView());
    pane.mainViewDidLoad();
    pane.didSelect();
    auto &list =
        dynamic_cast<TableView &>(*view->findChild<QTreeView *>(QStringLiteral("_ui_presetListView")));
    auto &tree =
        dynamic_cast<OutlineView &>(*view->findChild<QTreeView *>(QStringLiteral("_ui_presetHierarchyView")));
    auto &presets = *view->findChild<ArrayController *>();
    if (presets.arrangedObjects().isEmpty()) {
        pane.addPreset();
        // Ends the editing of its label, and saves.
        pane.windowDidResignKey();
    }
    restorer.accept();

    long long number = presets.arrangedObjects().constFirst()->valueForKey(QNBPresetKey::label).toLongLong();
    std::printf("starts %lld\n", number);
    QTimer edits;
    QObject::connect(&edits, &QTimer::timeout, &edits, [&] {
        pane.tableViewSetObjectValue(list, QString::number(++number), list.columns().constLast(), 0);
        std::printf("%lld %lld\n", number, now());
        presets.setSelectionIndex(0);
        switch (pick(8)) {
        case 0:
            pane.addFileToPresetHierarchy();
            break;
        case 1:
            pane.addDirectoryToPresetHierarchy();
            break;
        case 2:
            tree.selectRow(tree.numberOfRows() - 1);
            if (tree.numberOfRows() > 0)
                pane.deleteSelectedItemInPresetHierarchy();
            break;
        case 3:
            // As when another window gets the keyboard.
            pane.windowDidResignKey();
            break;
        default:
            break;
        }
        edits.start(1 + pick(400));
    });
    edits.start(0);
    return QApplication::exec();
}
