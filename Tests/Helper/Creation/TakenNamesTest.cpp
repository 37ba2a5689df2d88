// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/TakenNames.h"

#include "Platform/Files/PathExtension.h"
#include "Source/Model/QNBUniqueName.h"

#include <QStringList>
#include <gtest/gtest.h>
#include <random>

TEST(TakenNamesTest, FindsTheNamesThatTheEditorFinds)
{
    const QStringList names = {QStringLiteral("a"),       QStringLiteral("A"),       QStringLiteral("a-1"),
                               QStringLiteral("a-2"),     QStringLiteral("a.txt"),   QStringLiteral("A.TXT"),
                               QStringLiteral("a-1.txt"), QStringLiteral("a-01"),    QStringLiteral(".a"),
                               QStringLiteral("\u00C9"),  QStringLiteral("\u00E9-1")};
    std::mt19937 random(1);
    for (int round = 0; round < 500; ++round) {
        Creation::TakenNames taken;
        QStringList all;
        for (int i = 0; i < 12; ++i) {
            const QString &name = names.at(qsizetype(random() % unsigned(names.size())));
            if (random() % 3 == 0) {
                taken.add(name);
                all.append(name);
                continue;
            }
            const QString expected =
                QNBUniqueName(stringByDeletingPathExtension(name), pathExtension(name), all);
            EXPECT_EQ(taken.takeUniqueName(name), expected);
            all.append(expected);
        }
    }
}

TEST(TakenNamesTest, NumbersManyOfOneNameQuickly)
{
    Creation::TakenNames taken;
    const QString name = QStringLiteral("name.txt");
    taken.add(name);
    constexpr int many = 100'000;
    for (int i = 1; i < many; ++i)
        taken.takeUniqueName(name);
    EXPECT_EQ(taken.takeUniqueName(name), QStringLiteral("name-%1.txt").arg(many));
}
