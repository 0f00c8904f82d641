#include <Kit/KitMessage.h>
#include <Kit/KitMessageQueue.h>

#include <cstdio>
#include <utility>

namespace {

constexpr std::size_t kMaxMessages = 1000;
constexpr std::size_t kTextSize = 5000; ///< bytes of a message, as the default handlers cut it

constinit thread_local KitMessageQueue* sCurrent = nullptr;

} // namespace

KitMessageQueue::Scope::Scope(KitMessageQueue& queue)
    : mPrevious(std::exchange(sCurrent, &queue)) {}

KitMessageQueue::Scope::~Scope() {
    sCurrent = mPrevious;
}

bool KitMessageQueue::take(Channel channel, int code, const char* format, va_list arguments) {
    if (!sCurrent)
        return false;
    if (sCurrent->mMessages.size() >= kMaxMessages)
        return true;
    char text[kTextSize] = "";
    if (format)
        std::vsnprintf(text, sizeof text, format, arguments);
    sCurrent->mMessages.push_back({channel, code, text});
    return true;
}

void KitMessageQueue::deliver() {
    if (mMessages.empty())
        return;
    const std::vector<Message> messages = std::exchange(mMessages, {}); // a handler may cause more
    for (const Message& message : messages)
        (message.channel == kInfo      ? KitInfo
         : message.channel == kWarning ? KitWarning
                                       : KitDebug)(message.code, "%s", message.text.c_str());
}
