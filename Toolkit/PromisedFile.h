// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QTemporaryDir>
#include <QUrl>
#include <functional>
#include <memory>
#include <vector>

/// A file that does not exist before the drag that promised it is dropped outside of this process, or before
/// another program asks for it where nobody tells of the drop in time.
///
/// It is written by whoever promised it, once at most, into a private folder that lives as long as this, and
/// goes from there to where it is wanted. Whoever delivered a file keeps this as long as the other program
/// may not have copied it.
class PromisedFile
{
public:
    /// Writes the file into a folder and returns its name there; empty on failure.
    using Writer = std::function<QString(const QUrl &folder)>;

    /// \a probableName is told to those who ask before the drop.
    PromisedFile(const QString &probableName, Writer writer);

    QString probableName() const { return probableName_; }

    /// From here on who asks for the file gets it: until then they are only told where it will be.
    void giveWhenAsked() { isDue_ = true; }
    /// The same; and who asked before finds the file now.
    void drop();
    bool isWritten() const { return state_ == State::Written; }

    /// Where the file is, or will be after the drop. Invalid if it could not be written.
    QUrl url();
    /// Writes the file to \a path, which another program chose, and replaces what is there; a link is never
    /// followed.
    bool writeTo(const QString &path);

private:
    bool makeFolder();
    bool write();
    QString pathInFolder(const QString &name) const;

    enum class State { Promised, Written, Failed };

    QString probableName_;
    Writer writer_;
    std::unique_ptr<QTemporaryDir> folder_;
    /// Where it is now; in the private folder, or where another program wanted it.
    QString path_;
    State state_ = State::Promised;
    bool isDue_ = false;
    /// Somebody knows by now where the file will be.
    bool wasTold_ = false;
};

using PromisedFiles = std::vector<std::shared_ptr<PromisedFile>>;
