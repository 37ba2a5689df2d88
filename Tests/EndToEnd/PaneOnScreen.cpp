// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/PaneOnScreen.h"

#include <QRegularExpression>
#include <algorithm>
#include <utility>

namespace {

const QString treeRole = QStringLiteral("tree");
const QString rowRole = QStringLiteral("tree item");
const QString labelRole = QStringLiteral("label");
const QString buttonRole = QStringLiteral("push button");
const QString alertRole = QStringLiteral("alert message");
const QString listName = QStringLiteral("Presets");
const QString treeName = QStringLiteral("Folders and files");
const QString levelIndentation = QStringLiteral("  ");

} // namespace

bool PaneOnScreen::isThere(std::chrono::milliseconds patience)
{
    const auto isShown = [this] {
        const QList<Accessible> programs = reader_.programs();
        for (const Accessible &program : programs) {
            const auto list = program.find(treeRole, listName);
            const auto tree = program.find(treeRole, treeName);
            if (list && tree) {
                program_ = program;
                presetList_ = *list;
                itemTree_ = *tree;
                return true;
            }
        }
        return false;
    };
    return waitUntil(isShown, patience);
}

QList<Accessible> PaneOnScreen::rows(const Accessible &view)
{
    QList<Accessible> result;
    int top = -1;
    const QList<Accessible> children = view.children();
    for (const Accessible &child : children) {
        if (child.role() != rowRole)
            continue;
        // What stands before the name in the same row is not its name.
        const int childTop = child.extents().top();
        if (std::exchange(top, childTop) == childTop)
            result.last() = child;
        else
            result.append(child);
    }
    return result;
}

QStringList PaneOnScreen::names(const Accessible &view)
{
    QStringList result;
    const QList<Accessible> shown = rows(view);
    for (const Accessible &row : shown)
        result.append(row.name());
    return result;
}

QStringList PaneOnScreen::presets() const
{
    static const QRegularExpression number(QStringLiteral(" \\(#[0-9]+\\)$"));
    return names(presetList_).replaceInStrings(number, QString());
}

QStringList PaneOnScreen::tree() const
{
    const QList<Accessible> shown = rows(itemTree_);
    QList<int> edges;
    for (const Accessible &row : shown)
        edges.append(row.extents().left());
    // Each level begins farther to the right than the one above it.
    QList<int> levels = edges;
    std::sort(levels.begin(), levels.end());
    levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
    QStringList result;
    for (qsizetype row = 0; row < shown.size(); ++row)
        result.append(levelIndentation.repeated(levels.indexOf(edges.at(row))) + shown.at(row).name());
    return result;
}

QStringList PaneOnScreen::selected(const Accessible &view)
{
    QStringList result;
    const QList<Accessible> shown = rows(view);
    for (const Accessible &row : shown) {
        if (row.has(Accessible::State::Selected))
            result.append(row.name());
    }
    return result;
}

QRect PaneOnScreen::place(const Accessible &view, const QString &name)
{
    const QList<Accessible> shown = rows(view);
    for (const Accessible &row : shown) {
        if (row.name() == name)
            return row.extents();
    }
    return {};
}

QRect PaneOnScreen::button(const QString &name) const
{
    const auto found = program_.find(buttonRole, name);
    return found ? found->extents() : QRect();
}

bool PaneOnScreen::canPress(const QString &name) const
{
    const auto found = program_.find(buttonRole, name);
    return found && found->has(Accessible::State::Enabled);
}

QRect PaneOnScreen::placeOfLabel(const QString &text) const
{
    const auto found = program_.find(labelRole, text);
    return found ? found->extents() : QRect();
}

QStringList PaneOnScreen::alert() const
{
    QStringList result;
    const QList<Accessible> windows = program_.children();
    for (const Accessible &window : windows) {
        if (window.role() != alertRole || !window.has(Accessible::State::Showing))
            continue;
        for (const QString &role : {labelRole, buttonRole}) {
            const QList<Accessible> parts = window.findAll(role);
            for (const Accessible &part : parts) {
                if (!part.name().isEmpty())
                    result.append(part.name());
            }
        }
    }
    return result;
}
