// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/CreationPlan.h"

#include "Helper/Creation/ItemName.h"
#include "Helper/Creation/Planner.h"
#include "Platform/LineText.h"
#include "Shared/Source/QNBShared.h"
#include "Source/Model/QNBFolderMenu.h"

#include <QFile>
#include <algorithm>

namespace Creation {

namespace {

QString shownMode(const Operation &operation)
{
    return QString::number(operation.mode, 8).rightJustified(3, u'0');
}

QString attributes(const Operation &operation)
{
    if (operation.label == 0)
        return shownMode(operation);
    return QStringLiteral("%1, %2").arg(shownMode(operation), QNBColorForFinderLabel(operation.label));
}

} // namespace

QString Options::defaultContentFolder()
{
    return QNBApplicationSupportPath() + u'/' + QNBFolderMenu::fileContentFolder;
}

bool Plan::canBeExecuted() const
{
    return problems_.isEmpty() && std::none_of(conflicts_.cbegin(), conflicts_.cend(),
                                               [](const Conflict &c) { return c.newName.isEmpty(); });
}

QString Plan::path(qsizetype operation) const
{
    QList<QString> components;
    qsizetype size = 0;
    while (operation != Operation::noOperation && size <= ItemName::mostShown) {
        const Operation &step = operations_[static_cast<std::size_t>(operation)];
        if (step.kind != Operation::Kind::FinishFolder) {
            components.append(lineText(step.name));
            size += components.constLast().size() + 1;
        }
        operation = step.folder;
    }
    return ItemName::shownPath(components, operation != Operation::noOperation);
}

QStringList Plan::lines() const
{
    QStringList lines;
    lines.reserve(static_cast<qsizetype>(operations_.size()));
    for (qsizetype i = 0; i < static_cast<qsizetype>(operations_.size()); ++i) {
        const Operation &step = operations_[static_cast<std::size_t>(i)];
        switch (step.kind) {
        case Operation::Kind::MakeFolder:
            lines.append(QStringLiteral("create folder %1 (%2)").arg(path(i), attributes(step)));
            break;
        case Operation::Kind::UseFolder:
            lines.append(QStringLiteral("use existing folder %1").arg(path(i)));
            break;
        case Operation::Kind::MakeFile:
            lines.append(QStringLiteral("create file %1 (%2)").arg(path(i), attributes(step)));
            if (step.content != Operation::noContent)
                lines.last() += QStringLiteral(" with the content of %1")
                                    .arg(lineText(contents_[static_cast<std::size_t>(step.content)].name));
            break;
        case Operation::Kind::FinishFolder:
            lines.append(QStringLiteral("set permissions of folder %1 (%2)").arg(path(i), shownMode(step)));
            break;
        }
    }
    return lines;
}

Plan plan(const QNBHierarchyItem &root, const QString &target, const Options &options)
{
    return plan(root, target, options, FolderLayer::real());
}

Plan plan(const QNBHierarchyItem &root, const QString &target, const Options &options, FolderLayer &layer)
{
    return Planner(layer, options).plan(root, target);
}

} // namespace Creation
