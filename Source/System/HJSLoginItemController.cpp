// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/HJSLoginItemController.h"

#include "Platform/Desktop/SharedFileList.h"
#include "Platform/Files/FileURL.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(lcLoginItems, "quenby.loginitems")

/// Not valid if \a path is empty: nothing begins with that.
QUrl fileURLOf(const QString &path)
{
    if (path.isEmpty())
        return {};
    return fileURLOfPath(QFile::encodeName(path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path));
}

} // namespace

void HJSLoginItemController::addLoginItemOpenAtLogin(const QString &path, bool openAtLogin)
{
    const QUrl url = fileURLOf(path);
    const std::optional<SharedFileList> loginItems = SharedFileList::create();
    if (!loginItems)
        return;
    if (openAtLogin)
        enableLoginItemWithLoginItemsReferenceForPath(*loginItems, url);
    else
        disableLoginItemWithLoginItemsReferenceForPath(*loginItems, url);
}

void HJSLoginItemController::enableLoginItemWithLoginItemsReferenceForPath(const SharedFileList &loginItems,
                                                                           const QUrl &url)
{
    if (const Result<> result = loginItems.insertItemURL(url); !result)
        qCWarning(lcLoginItems) << "not added:" << url << result.error;
}

void HJSLoginItemController::disableLoginItemWithLoginItemsReferenceForPath(const SharedFileList &loginItems,
                                                                            const QUrl &url)
{
    const std::optional<QByteArray> prefix = pathOfFileURL(url.adjusted(QUrl::StripTrailingSlash));
    if (!prefix) {
        qCWarning(lcLoginItems) << "nothing removed, no address of a file:" << url;
        return;
    }
    const QList<SharedFileList::Item> snapshot = loginItems.copySnapshot();
    for (const SharedFileList::Item &item : snapshot) {
        const std::optional<QUrl> resolved = loginItems.resolve(item);
        if (!resolved || !pathOfFileURL(*resolved).value_or(QByteArray()).startsWith(*prefix))
            continue;
        if (const Result<> result = loginItems.remove(item); !result)
            qCWarning(lcLoginItems) << "not removed:" << item.fileName() << result.error;
    }
}
