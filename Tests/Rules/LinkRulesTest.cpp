// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// This program holds the core libraries whole. Would one of them need Qt's gui or widgets, the program could
// not be linked without them, or the loader would have brought them in by now.

#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// The mapped objects that draw, of the text of /proc/PID/maps.
QStringList drawingLibraries(const QString &maps)
{
    static const QRegularExpression object(
        QStringLiteral("/(lib(?:Qt6(?:Gui|Widgets|Svg|OpenGL)|X11|xcb|wayland-client)\\.so[.0-9]*)"));
    QStringList names;
    auto matches = object.globalMatch(maps);
    while (matches.hasNext())
        names.append(matches.next().captured(1));
    names.removeDuplicates();
    return names;
}

} // namespace

TEST(LinkRulesTest, TheCoreLinksNoGui)
{
    QFile maps(QStringLiteral("/proc/self/maps"));
    ASSERT_TRUE(maps.open(QIODevice::ReadOnly));
    const QString text = QString::fromUtf8(maps.readAll());
    ASSERT_TRUE(text.contains(u"libQt6Core.so"));
    EXPECT_THAT(drawingLibraries(text), IsEmpty())
        << "Nothing that the command line and the context-menu plug-in use without a screen may bring in a "
           "library that draws.";
}

TEST(LinkRulesTest, AGuiLibraryIsCaught)
{
    EXPECT_THAT(drawingLibraries(QStringLiteral(
                    "7f0000000000-7f0000001000 r-xp 00000000 08:01 1 /usr/lib/libQt6Gui.so.6.4.2\n"
                    "7f0000001000-7f0000002000 r--p 00000000 08:01 1 /usr/lib/libQt6Gui.so.6.4.2\n"
                    "7f0000002000-7f0000003000 r-xp 00000000 08:01 2 /usr/lib/libQt6Core.so.6.4.2\n")),
                ElementsAre(QStringLiteral("libQt6Gui.so.6.4.2")));
}
