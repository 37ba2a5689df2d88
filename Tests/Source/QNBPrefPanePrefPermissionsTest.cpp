// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PaneFixture.h"

#include <QCheckBox>

namespace {

const QStringList boxNames{QStringLiteral("OwnerR"),  QStringLiteral("OwnerW"),  QStringLiteral("OwnerX"),
                           QStringLiteral("GroupR"),  QStringLiteral("GroupW"),  QStringLiteral("GroupX"),
                           QStringLiteral("OthersR"), QStringLiteral("OthersW"), QStringLiteral("OthersX")};

QVariantMap permissions(qlonglong owner, qlonglong group, qlonglong others)
{
    return {{QStringLiteral("u"), owner}, {QStringLiteral("g"), group}, {QStringLiteral("o"), others}};
}

class QNBPrefPanePrefPermissions : public PaneFixture
{
protected:
    QCheckBox &box(const QString &name) const
    {
        return *outlet<QCheckBox>(QStringLiteral("_ui_perm") + name);
    }

    QStringList checked() const
    {
        QStringList names;
        for (const QString &name : boxNames) {
            if (box(name).checkState() == Qt::Checked)
                names << name;
        }
        return names;
    }
};

TEST_F(QNBPrefPanePrefPermissions, AnItemWith764ShowsItsBoxes)
{
    store({preset(QStringLiteral("A"), {QStringLiteral("file")})});
    openPane();
    EXPECT_EQ(checked(), QStringList());
    outline().selectRow(0);
    EXPECT_EQ(checked(),
              QStringList({QStringLiteral("OwnerR"), QStringLiteral("OwnerW"), QStringLiteral("OwnerX"),
                           QStringLiteral("GroupR"), QStringLiteral("GroupW"), QStringLiteral("OthersR")}));
    outline().selectRow(OutlineView::noRow);
    EXPECT_EQ(checked(), QStringList());
}

TEST_F(QNBPrefPanePrefPermissions, TheBoxesAreRefreshedBeforeTheColourButtons)
{
    const QNBPresetRecordPtr record = preset(QStringLiteral("A"), {QStringLiteral("file")});
    record->fileHierarchy()->childAtIndex(0)->setColorName(QStringLiteral("red"));
    record->fileHierarchy()->childAtIndex(0)->setCustomPermissions(permissions(4, 0, 1));
    store({record});
    openPane();
    QStringList changes;
    for (const QString &name : boxNames)
        QObject::connect(&box(name), &QCheckBox::stateChanged, [&changes, name] { changes << name; });
    QObject::connect(outlet<QNBHoverButton>(QStringLiteral("_ui_redButton")), &QNBHoverButton::toggled,
                     [&changes] { changes << QStringLiteral("red"); });
    outline().selectRow(0);
    EXPECT_EQ(changes,
              QStringList({QStringLiteral("OwnerR"), QStringLiteral("OthersX"), QStringLiteral("red")}));
}

} // namespace
