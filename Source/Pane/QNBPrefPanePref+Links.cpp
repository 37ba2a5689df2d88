// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBPrefPanePref.h"
#include "Toolkit/DarkGround.h"

#include <QLabel>
#include <QUrl>

namespace {

const QString webSite = QStringLiteral("https://quenby.example");
const QString helpPage = QStringLiteral("/help.php");
const QString linkTitle = QStringLiteral("quenby.example");
const QString linkFormat =
    QStringLiteral("<a href=\"%1\" style=\"color: %2; text-decoration: underline\">%3</a>");

/// Pure blue cannot be read on dark grounds.
constexpr QRgb blueOnLight = 0xff0000ff;
constexpr QRgb blueOnDark = 0xff6cb2ff;

QColor linkBlue(const QPalette &palette)
{
    return QColor::fromRgb(isDarkGround(palette.color(QPalette::Window)) ? blueOnDark : blueOnLight);
}

} // namespace

void QNBPrefPanePref::showWebsiteLink()
{
    _ui_websiteLink->setText(linkFormat.arg(webSite, linkBlue(_ui_websiteLink->palette()).name(), linkTitle));
}

void QNBPrefPanePref::openAppWebsite()
{
    _services.openURL(QUrl(webSite));
}

void QNBPrefPanePref::openHelpWebsite()
{
    _services.openURL(QUrl(webSite + helpPage));
}
