// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Benchmarks/EditedTree.h"
#include "Source/Pane/QNBPrefPanePref.h"

#include <QTemporaryDir>

class ArrayController;
class OutlineView;

/// The tree of a preset in the pane's own outline, edited by the pane's own actions.
class PaneTree final : public EditedTree
{
public:
    /// Stores the preset, and an empty one, where a pane then finds them.
    explicit PaneTree(const QNBPresetRecordPtr &preset);
    ~PaneTree() override;

    QTreeView &view() override;
    void insert() override;
    void rename(const QString &name) override;
    void color() override;
    void remove() override;
    void move() override;
    void restore() override;
    void hideRows() override;
    void showExpanded() override;

private:
    QNBPrefPanePref::Services services() const;
    void selectEdited();

    QTemporaryDir home_;
    std::vector<int> pathToEdited_;
    std::unique_ptr<QNBPrefPanePref> pane_;
    std::unique_ptr<QWidget> mainView_;
    OutlineView *outline_ = nullptr;
    ArrayController *presetList_ = nullptr;
    QNBHoverButton *redButton_ = nullptr;
};
