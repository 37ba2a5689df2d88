// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QSocketNotifier>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

/// Sees to it that one host runs for each preference folder: a lock that the first holds until it has ended,
/// and a socket beside it on which later ones say what they were asked for. Needs no bus, and waits for
/// nothing but another host.
class InstanceGuard
{
public:
    /// What a start was asked for.
    struct Request
    {
        /// The pane's path, or what cannot be shown was called, or empty.
        QString panePath;
        /// The desktop's leave to come to the front, or empty.
        QByteArray activationToken;
        /// For the pane; their paths are absolute. Of very many the rest comes in further requests
        /// for the same pane.
        QStringList files = {};
    };

    enum class Outcome {
        /// We are the first; or nobody can know, without a folder for the lock.
        First,
        /// Another one runs, and has taken the request.
        Handed,
        /// Another one runs, of a version that has taken the request but knows of no files.
        WithoutFiles,
        /// Another one runs; one of the texts is too long to be handed over, and so nothing was.
        TooLong,
        /// Another one runs, has taken some of the files, and then has not answered any more.
        HandedInPart,
        /// Another one runs, and does not answer.
        NoAnswer,
    };

    /// For the preferences of the user who runs this.
    InstanceGuard();
    /// \a preferenceFolder tells hosts apart, \a runtimeFolder holds lock and socket.
    InstanceGuard(const QString &preferenceFolder, const QString &runtimeFolder);
    ~InstanceGuard();
    InstanceGuard(const InstanceGuard &) = delete;
    InstanceGuard &operator=(const InstanceGuard &) = delete;

    /// What Outcome::NoAnswer means: a sentence for the user.
    static QString whyNoAnswer();
    /// Becomes the first or hands over \a request, with however many files; waits for another one at most
    /// \a timeout, and as long again for each part that it takes. Who becomes the first because that one ends
    /// in the middle may open files that it has taken too.
    Outcome begin(const Request &request, std::chrono::milliseconds timeout);
    /// Becomes the first if there is no other one, which is left alone. Whether we are it; then requests are
    /// taken, also again after close().
    bool becomeFirst();
    /// Calls \a handler on the event loop for what later ones ask for, once for each.
    void handleWith(std::function<void(const Request &)> handler);
    /// Whether they are taken and handled.
    bool takesRequests() const { return notifier_ != nullptr; }
    /// Takes no more requests: later ones wait for the end of this one, and then are the first.
    void close();

private:
    struct Packet;

    static QList<Packet> packetsOf(const Request &request);
    bool lock();
    bool listen();
    Outcome hand(QList<Packet> &packets, const QDeadlineTimer &deadline) const;
    void accept(const std::function<void(const Request &)> &handler) const;

    QByteArray lockPath_;
    QByteArray socketPath_;
    int lock_ = -1;
    int socket_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};
