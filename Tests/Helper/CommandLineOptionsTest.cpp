// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/CommandLineOptions.h"

#include <gmock/gmock.h>

using Command = CommandLineOptions::Command;
using ::testing::ElementsAre;

namespace {

QStringList words(const char *line)
{
    return QStringList{QStringLiteral("QNBHelper")} + QString::fromUtf8(line).split(u' ', Qt::SkipEmptyParts);
}

std::optional<CommandLineOptions> parse(const char *line)
{
    QString error;
    auto options = CommandLineOptions::parse(words(line), &error);
    EXPECT_EQ(options.has_value(), error.isEmpty()) << line;
    return options;
}

} // namespace

TEST(CommandLineOptionsTest, Commands)
{
    EXPECT_EQ(parse("--list")->command, Command::List);
    EXPECT_EQ(parse("--undo")->command, Command::Undo);
    EXPECT_EQ(parse("--help")->command, Command::Help);
    EXPECT_EQ(parse("-h")->command, Command::Help);
    EXPECT_EQ(parse("--version")->command, Command::Version);
    EXPECT_EQ(parse("-v")->command, Command::Version);
    EXPECT_TRUE(parse("--list --json")->isJson);
}

TEST(CommandLineOptionsTest, ACreation)
{
    const auto options = parse("--create One --in /a --in b");
    ASSERT_TRUE(options);
    EXPECT_EQ(options->command, Command::Create);
    EXPECT_EQ(options->preset, QStringLiteral("One"));
    EXPECT_THAT(options->folders, ElementsAre(QStringLiteral("/a"), QStringLiteral("b")));
    EXPECT_EQ(options->onConflict, Creation::OnConflict::UniqueName);
    EXPECT_FALSE(options->isDryRun || options->isJson || options->allowScript || options->notify);
    EXPECT_TRUE(options->runScript);
    EXPECT_FALSE(options->scriptTimeLimit || options->position);
}

TEST(CommandLineOptionsTest, ACreationWithEverything)
{
    const auto options = parse("--create --odd --in=-folder --dry-run --json --on-conflict refuse "
                               "--allow-script --script-time-limit 7 --notify --position 2");
    ASSERT_TRUE(options);
    EXPECT_EQ(options->preset, QStringLiteral("--odd"));
    EXPECT_THAT(options->folders, ElementsAre(QStringLiteral("-folder")));
    EXPECT_EQ(options->onConflict, Creation::OnConflict::Refuse);
    EXPECT_TRUE(options->isDryRun && options->isJson && options->allowScript && options->notify);
    EXPECT_EQ(options->scriptTimeLimit, 7);
    EXPECT_EQ(options->position, 2);
    EXPECT_FALSE(parse("--create a --in b --no-script")->runScript);
    EXPECT_EQ(parse("--create a --in b --on-conflict unique")->onConflict, Creation::OnConflict::UniqueName);
}

TEST(CommandLineOptionsTest, TheLauncher)
{
    const auto options = parse("--launcher --in /a --in b --notify");
    ASSERT_TRUE(options);
    EXPECT_EQ(options->command, Command::Launcher);
    EXPECT_THAT(options->folders, ElementsAre(QStringLiteral("/a"), QStringLiteral("b")));
    EXPECT_TRUE(options->notify);
    EXPECT_TRUE(parse("--launcher")->folders.isEmpty());
    // As file managers' entries of earlier versions have it.
    EXPECT_TRUE(parse("--undo --notify")->notify);
    EXPECT_EQ(parse("--menu --notify --in a")->command, Command::Launcher);
}

TEST(CommandLineOptionsTest, WhatMakesNoSense)
{
    for (const char *line : {"",
                             "--json",
                             "--unknown",
                             "--list --undo",
                             "--create a",
                             "--create a --in",
                             "--in b",
                             "--create a --create b --in c",
                             "--create a --in b --list",
                             "--create a --in b more",
                             "--list more",
                             "--undo --dry-run",
                             "--list --notify",
                             "--create a --in b --on-conflict overwrite",
                             "--create a --in b --no-script --allow-script",
                             "--create a --in b --script-time-limit 0",
                             "--create a --in b --script-time-limit soon",
                             "--undo --in x",
                             "--list --position 1",
                             "--menu",
                             "--menu --create a --in b",
                             "--launcher --json",
                             "--launcher --in a --no-script",
                             "--launcher --create a --in b",
                             "--launcher --menu --in a",
                             "--launcher more",
                             "--list --in a",
                             "--create a --in b --position 0",
                             "--create a --in b --position #1",
                             "--list --script-time-limit 3"})
        EXPECT_FALSE(parse(line)) << line;
    QString error;
    EXPECT_FALSE(CommandLineOptions::parse(words("--create a --in") + QStringList{QString()}, &error));
}

TEST(CommandLineOptionsTest, HelpNamesEveryOption)
{
    const QString help = CommandLineOptions::help();
    for (const char *option : {"--list", "--create", "--launcher", "--menu", "--in", "--dry-run", "--json",
                               "--on-conflict", "--no-script", "--allow-script", "--script-time-limit",
                               "--notify", "--undo", "--help", "--version"})
        EXPECT_TRUE(help.contains(QString::fromLatin1(option))) << option;
}
