// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Changes a list of login items over and over, for tests that need several processes to do so at once.
//
//     quenby-test-login-items FOLDER OWN SHARED COUNT
//
// That many times it appends the application OWN, appends SHARED, and removes OWN again; in the end it
// appends OWN. The exit status is 1 if any of that failed or the list did not show it.

#include "Platform/Desktop/SharedFileList.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

constexpr int usage = 64;

std::optional<SharedFileList::Item> find(const SharedFileList &list, const QUrl &url)
{
    const QList<SharedFileList::Item> items = list.copySnapshot();
    const auto found = std::find_if(items.begin(), items.end(), [&](const SharedFileList::Item &item) {
        return list.resolve(item) == url;
    });
    return found == items.end() ? std::nullopt : std::optional(*found);
}

bool has(const Result<> &result)
{
    if (!result)
        qCritical("%s", qPrintable(result.error));
    return result.ok;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 5)
        return usage;
    const std::optional<SharedFileList> list = SharedFileList::create(arguments.at(1));
    const QUrl own = QUrl::fromLocalFile(arguments.at(2));
    const QUrl shared = QUrl::fromLocalFile(arguments.at(3));
    if (!list)
        return 1;
    for (int round = arguments.at(4).toInt(); round > 0; --round) {
        if (!has(list->insertItemURL(own)) || !has(list->insertItemURL(shared)) || !find(*list, shared))
            return 1;
        const std::optional<SharedFileList::Item> item = find(*list, own);
        if (!item || !has(list->remove(*item)) || find(*list, own))
            return 1;
    }
    return has(list->insertItemURL(own)) ? 0 : 1;
}
