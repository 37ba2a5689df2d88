// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Stands for a window of a program that says where a file that is dragged to it is to be saved: the target's
// side of the direct-save protocol, on top of the protocol of drags between X11 windows (XDND, version 5).
//
// usage: quenby-direct-save-target --at X,Y --url URL
//
// A window 200 pixels wide and high, at X,Y. What is dropped on it is to be saved as URL, in which {} stands
// for the name that the source announces.
//
// One line is printed for each thing that happens:
//   ready           the window is there
//   enter TYPE...   a drag came over the window
//   name NAME       it was dropped, and this name was announced
//   answer S|F|E    what the source answered; "none" if it did not
//   list TEXT       (after F) the text/uri-list that it gives instead
//   done            all there is to say about the drop was said

#include <QByteArray>
#include <QHash>
#include <QList>

#include <xcb/xcb.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr std::uint16_t sideLength = 200;
constexpr std::uint32_t xdndVersion = 5;
constexpr std::uint32_t longestProperty = 1 << 16;

struct Freed
{
    void operator()(void *reply) const { std::free(reply); }
};
template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, Freed>;

void print(const QByteArray &line)
{
    std::puts(line.constData());
    std::fflush(stdout);
}

class DirectSaveTarget
{
public:
    DirectSaveTarget(std::int16_t x, std::int16_t y, const QByteArray &url)
        : url_(url)
    {
        const xcb_screen_t *screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        const std::uint32_t values[] = {screen->white_pixel, 1};
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, x, y, sideLength,
                          sideLength, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, atom("XdndAware"), XCB_ATOM_ATOM, 32,
                            1, &xdndVersion);
        xcb_map_window(connection_, window_);
        sync();
        print("ready");
    }

    /// Ends with the connection.
    void run()
    {
        while (const ReplyPtr<xcb_generic_event_t> event{xcb_wait_for_event(connection_)}) {
            const int type = event->response_type & ~0x80;
            if (type == XCB_CLIENT_MESSAGE)
                handle(*reinterpret_cast<xcb_client_message_event_t *>(event.get()));
            else if (type == XCB_SELECTION_NOTIFY)
                handle(*reinterpret_cast<xcb_selection_notify_event_t *>(event.get()));
        }
    }

private:
    void handle(const xcb_client_message_event_t &message)
    {
        const std::uint32_t *words = message.data.data32;
        if (message.type == atom("XdndEnter")) {
            source_ = words[0];
            printTypes(words);
        } else if (message.type == atom("XdndPosition")) {
            tell("XdndStatus", {1, 0, 0, atom("XdndActionCopy")});
        } else if (message.type == atom("XdndDrop")) {
            time_ = words[2];
            wantFile();
        }
    }

    void handle(const xcb_selection_notify_event_t &answer)
    {
        const QByteArray value =
            answer.property == XCB_ATOM_NONE ? QByteArray() : property(window_, answer.property);
        if (answer.target == atom("text/uri-list")) {
            print("list " + value.trimmed());
            finish(!value.isEmpty());
            return;
        }
        print("answer " + (value.isEmpty() ? QByteArray("none") : value));
        if (value == "F")
            ask("text/uri-list");
        else
            finish(value == "S");
    }

    void printTypes(const std::uint32_t *words)
    {
        QByteArray line = "enter";
        if (words[1] & 1) {
            const QByteArray list = property(source_, atom("XdndTypeList"));
            for (qsizetype at = 0; at + 4 <= list.size(); at += 4) {
                xcb_atom_t type = XCB_ATOM_NONE;
                std::memcpy(&type, list.constData() + at, sizeof type);
                line += ' ' + nameOf(type);
            }
        } else {
            for (int at = 2; at < 5 && words[at] != XCB_ATOM_NONE; ++at)
                line += ' ' + nameOf(words[at]);
        }
        print(line);
    }

    void wantFile()
    {
        const QByteArray name = property(source_, atom("XdndDirectSave0"));
        print("name " + name);
        const QByteArray url = QByteArray(url_).replace("{}", name.toPercentEncoding());
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, source_, atom("XdndDirectSave0"),
                            atom("text/plain"), 8, std::uint32_t(url.size()), url.constData());
        ask("XdndDirectSave0");
    }

    void ask(const char *type)
    {
        xcb_convert_selection(connection_, window_, atom("XdndSelection"), atom(type), atom("ANSWER"), time_);
        xcb_flush(connection_);
    }

    void finish(bool isAccepted)
    {
        const xcb_atom_t action = isAccepted ? atom("XdndActionCopy") : xcb_atom_t(XCB_ATOM_NONE);
        tell("XdndFinished", {isAccepted, action, 0, 0});
        print("done");
    }

    void tell(const char *type, const QList<std::uint32_t> &words)
    {
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = source_;
        message.type = atom(type);
        message.data.data32[0] = window_;
        for (int i = 0; i < words.size(); ++i)
            message.data.data32[i + 1] = words[i];
        xcb_send_event(connection_, false, source_, XCB_EVENT_MASK_NO_EVENT,
                       reinterpret_cast<const char *>(&message));
        xcb_flush(connection_);
    }

    xcb_atom_t atom(const QByteArray &name)
    {
        xcb_atom_t &atom = atoms_[name];
        if (atom == XCB_ATOM_NONE) {
            const ReplyPtr<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
                connection_,
                xcb_intern_atom(connection_, false, std::uint16_t(name.size()), name.constData()), nullptr));
            atom = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
        }
        return atom;
    }
    QByteArray nameOf(xcb_atom_t atom)
    {
        const ReplyPtr<xcb_get_atom_name_reply_t> reply(
            xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, atom), nullptr));
        return reply ? QByteArray(xcb_get_atom_name_name(reply.get()),
                                  xcb_get_atom_name_name_length(reply.get()))
                     : QByteArray();
    }
    QByteArray property(xcb_window_t window, xcb_atom_t name)
    {
        const auto cookie =
            xcb_get_property(connection_, false, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, longestProperty);
        const ReplyPtr<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_, cookie, nullptr));
        return reply ? QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                                  xcb_get_property_value_length(reply.get()))
                     : QByteArray();
    }
    /// Everything asked for so far has been done.
    void sync() { atom("SYNC"); }

    xcb_connection_t *connection_ = xcb_connect(nullptr, nullptr);
    xcb_window_t window_ = xcb_generate_id(connection_);
    QByteArray url_;
    xcb_window_t source_ = XCB_WINDOW_NONE;
    xcb_timestamp_t time_ = XCB_CURRENT_TIME;
    QHash<QByteArray, xcb_atom_t> atoms_;
};

} // namespace

int main(int argc, char **argv)
{
    QHash<QByteArray, QByteArray> options;
    for (int i = 1; i + 1 < argc; i += 2)
        options.insert(argv[i], argv[i + 1]);
    const QList<QByteArray> at = options.value("--at").split(',');
    if (at.size() != 2 || !options.contains("--url")) {
        std::fputs("usage: quenby-direct-save-target --at X,Y --url URL\n", stderr);
        return 2;
    }
    DirectSaveTarget(std::int16_t(at[0].toInt()), std::int16_t(at[1].toInt()), options.value("--url")).run();
    return 0;
}
