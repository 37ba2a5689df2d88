// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

class QUrl;
class SharedFileList;

/// Keeps applications in, or out of, the list of what the user's session opens at login. Holds nothing;
/// failures are logged and change nothing more.
class HJSLoginItemController
{
public:
    HJSLoginItemController() = delete;

    /// Puts the application at \a path into the session's list, or takes it and all that begins with the same
    /// path out of it.
    static void addLoginItemOpenAtLogin(const QString &path, bool openAtLogin);

    /// Appends \a url, whether or not it is there already.
    static void enableLoginItemWithLoginItemsReferenceForPath(const SharedFileList &loginItems,
                                                              const QUrl &url);

    /// Removes every entry whose file has a path that begins with the one of \a url, character by character:
    /// what lies inside a bundle goes with it, and so does "Name.app2" with "Name.app". Entries that do not
    /// resolve stay.
    static void disableLoginItemWithLoginItemsReferenceForPath(const SharedFileList &loginItems,
                                                               const QUrl &url);
};
