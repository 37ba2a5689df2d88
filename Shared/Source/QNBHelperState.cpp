// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/QNBHelperState.h"

#include "Platform/Bus/SessionBus.h"
#include "Shared/Source/QNBShared.h"

#include <QDBusArgument>
#include <QDBusMessage>

#include <algorithm>
#include <array>
#include <utility>

namespace {

using HotKey = QNBHelperState::HotKey;

const QString hotKeyKey = QStringLiteral("HotKey");
const QString keysKey = QStringLiteral("Keys");
const QString trayKey = QStringLiteral("Tray");

const std::array<std::pair<HotKey, QString>, 7> words = {{
    {HotKey::None, QStringLiteral("none")},
    {HotKey::ByDesktop, QStringLiteral("desktop")},
    {HotKey::Asking, QStringLiteral("asking")},
    {HotKey::ByPortal, QStringLiteral("portal")},
    {HotKey::ByScreen, QStringLiteral("screen")},
    {HotKey::Refused, QStringLiteral("refused")},
    {HotKey::Impossible, QStringLiteral("impossible")},
}};

} // namespace

QVariantMap QNBHelperState::toMap() const
{
    const auto *word = std::find_if(words.begin(), words.end(),
                                    [this](const auto &candidate) { return candidate.first == hotKey; });
    QVariantMap map = {{hotKeyKey, word->second}, {keysKey, keys}};
    if (hasTray)
        map.insert(trayKey, *hasTray);
    return map;
}

QNBHelperState QNBHelperState::fromMap(const QVariantMap &map)
{
    const QString said = map.value(hotKeyKey).toString();
    const auto *word = std::find_if(words.begin(), words.end(),
                                    [&said](const auto &candidate) { return candidate.second == said; });
    const auto tray = map.constFind(trayKey);
    return {word == words.end() ? HotKey::None : word->first, map.value(keysKey).toString(),
            tray == map.cend() ? std::nullopt : std::optional(tray->toBool())};
}

void QNBHelperState::ask(SessionBus &bus,
                         const std::function<void(const std::optional<QNBHelperState> &state)> &answered)
{
    QDBusMessage question = QDBusMessage::createMethodCall(QNBHelperServiceName(), QNBHelperObjectPath,
                                                           QNBHelperServiceName(), QNBHelperStateMethod);
    question.setAutoStartService(false);
    bus.call(question, SessionBus::answerTimeout, [answered](const QDBusMessage &reply) {
        if (reply.type() == QDBusMessage::ReplyMessage)
            answered(fromMap(qdbus_cast<QVariantMap>(reply.arguments().value(0))));
        else
            answered(std::nullopt);
    });
}
