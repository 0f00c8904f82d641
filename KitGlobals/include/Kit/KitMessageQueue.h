#pragma once
#include <Kit/KitApi.h>

#include <cstdarg>
#include <string>
#include <vector>

/// Messages of a piece of parallel work, kept until a thread that may call handlers delivers them: in the
/// order of the work, not of the clock. Fatal errors do not wait.
class HY_API KitMessageQueue {
public:
    /// While it lives, infos, warnings and debug messages of its thread go into a queue.
    class HY_API Scope {
    public:
        explicit Scope(KitMessageQueue& queue);
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope();

    private:
        KitMessageQueue* mPrevious;
    };
    enum Channel : int { kInfo, kWarning, kDebug };

    /// Calls the handlers and empties the queue.
    void deliver();

    /// Puts a message into the queue of the calling thread, and beyond a thousand nowhere. False if
    /// the thread has none, and the message is to go to its handler.
    [[nodiscard]] static bool take(Channel channel, int code, const char* format, va_list arguments)
        __attribute__((format(printf, 3, 0)));

private:
    struct Message {
        Channel channel;
        int code;
        std::string text;
    };
    std::vector<Message> mMessages;
};
