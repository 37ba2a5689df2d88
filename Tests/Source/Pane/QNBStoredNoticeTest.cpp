// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBStoredNotice.h"

#include "Source/Controls/QNBShownTime.h"

#include <gtest/gtest.h>

namespace {

using Damage = Preferences::Damage;
using Cause = Damage::Cause;

const QDateTime saved{QDate(2026, 2, 3), QTime(4, 5, 6), Qt::UTC};
const QString aside = QStringLiteral("/home/u/domain.plist.damaged-20260204T000000Z");

Damage damage(Cause cause, const QDateTime &backup, const QStringList &kept)
{
    return {.cause = cause, .reason = QStringLiteral("the reason"), .backup = backup, .kept = kept};
}

QString mended(Cause cause, const QDateTime &backup, const QStringList &kept, bool isShown = true)
{
    return QNBStoredNotice::ofMended(damage(cause, backup, kept), isShown).text;
}

QString filled(const char *text)
{
    return QString::fromUtf8(text)
        .replace(QStringLiteral("DATE"), QNBShownTime(saved))
        .replace(QStringLiteral("FILE"), aside);
}

} // namespace

TEST(QNBStoredNotice, SaysWhatWasTheMatterWhatTookItsPlaceAndWhereItIs)
{
    EXPECT_EQ(mended(Cause::Broken, saved, {aside}),
              filled("Your presets could not be read, because their file was damaged. "
                     "Those of DATE were restored from the backup. The file is kept as FILE."));
    EXPECT_EQ(mended(Cause::TooLarge, saved, {aside}),
              filled("Your presets could not be read, because their file was too large. "
                     "Those of DATE were restored from the backup. The file is kept as FILE."));
    EXPECT_EQ(mended(Cause::Missing, saved, {}),
              filled("The file of your presets was missing. Those of DATE were restored from the backup."));
}

TEST(QNBStoredNotice, SaysThatThereWasNoBackup)
{
    EXPECT_EQ(mended(Cause::Broken, {}, {aside, QStringLiteral("/the/backup")}),
              filled("Your presets could not be read, because their file was damaged. There was no good "
                     "backup: you begin with the default presets. The file is kept as FILE."));
    EXPECT_EQ(mended(Cause::Missing, {}, {aside}),
              filled("The file of your presets was missing. There was no good backup: you begin with the "
                     "default presets. The damaged backup is kept as FILE."));
}

TEST(QNBStoredNotice, SaysThatWhatTheUserMadeTakesThePlaceOfTheFile)
{
    for (const QDateTime &backup : {saved, QDateTime()})
        EXPECT_EQ(mended(Cause::Broken, backup, {aside}, false),
                  filled("Your presets could not be read, because their file was damaged. What is shown "
                         "takes their place. The file is kept as FILE."));
}

TEST(QNBStoredNotice, TheDetailsNameTheReasonAndAllThatIsKept)
{
    const PaneNotice notice =
        QNBStoredNotice::ofMended(damage(Cause::Broken, {}, {aside, QStringLiteral("/the/backup")}), true);
    EXPECT_EQ(notice.kind, PaneNotice::Kind::Replaced);
    EXPECT_EQ(notice.details, filled("the reason\nFILE\n/the/backup"));
}

TEST(QNBStoredNotice, SaysWhatKeepsTheSettingsFromBeingRead)
{
    const QString reason = QStringLiteral("cannot open /home/u/domain.plist: Permission denied");
    const PaneNotice notice = QNBStoredNotice::ofUnread(reason, std::nullopt, {}, false);
    EXPECT_EQ(notice.kind, PaneNotice::Kind::Unreadable);
    EXPECT_EQ(notice.text, QStringLiteral("Your presets and options cannot be read: Permission denied. The "
                                          "default presets are shown. Nothing is saved in place of what is "
                                          "stored."));
    EXPECT_EQ(notice.details, reason);
    EXPECT_TRUE(QNBStoredNotice::ofUnread(reason, std::nullopt, saved, false)
                    .text.contains(filled(" Those of DATE, from the backup, are shown. Nothing is saved")));
}

TEST(QNBStoredNotice, SaysWhatKeepsADamagedFileFromBeingReplaced)
{
    const QString reason = QStringLiteral("cannot write /home/u/x: No space left on device");
    const PaneNotice notice =
        QNBStoredNotice::ofUnread(reason, damage(Cause::Broken, saved, {}), saved, false);
    EXPECT_EQ(notice.kind, PaneNotice::Kind::Unreadable);
    EXPECT_EQ(
        notice.text,
        filled("Your presets could not be read, because their file was damaged. Those of DATE, from the "
               "backup, are shown. Nothing can be saved before the file is replaced, which is not "
               "possible now: No space left on device."));
    EXPECT_EQ(notice.details, QStringLiteral("the reason\n") + reason);
    EXPECT_TRUE(QNBStoredNotice::ofUnread(reason, damage(Cause::Broken, saved, {}), {}, false)
                    .text.contains(u"The default presets are shown. "))
        << "the backup came later";
}

TEST(QNBStoredNotice, SaysThatChangesCannotBeSavedInPlaceOfWhatIsShown)
{
    for (const auto &found : {std::optional<Damage>(), std::optional(damage(Cause::Broken, saved, {}))}) {
        const QString text = QNBStoredNotice::ofUnread(QStringLiteral("x"), found, saved, true).text;
        EXPECT_TRUE(text.contains(u" Your changes cannot be saved yet. Nothing ")) << qPrintable(text);
        EXPECT_FALSE(text.contains(u"are shown")) << qPrintable(text);
    }
}

TEST(QNBStoredNotice, APathStaysOneLine)
{
    EXPECT_TRUE(mended(Cause::Broken, saved, {QStringLiteral("/home/\n%1/x")}).endsWith(u"/home/␊%1/x."));
}
