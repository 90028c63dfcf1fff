#include "OrvaneEvent.h"
#include "OrvaneEventList.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTelephone.h"
#include "utilities/Serializer.h"

#include <cstdlib>

/// Event texts, one a line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    FuzzTelephone phone;
    phone.openSession();
    OrvaneEvent former;
    for (int texts = 0; !input.atEnd() && texts < 16; ++texts) {
        const std::string text = input.line();
        // As a filter that the provider confirms, and as an event of it, whether parsing would end or not.
        std::string quoted;
        Serializer::serialize(quoted, text, false);
        phone.drive([&] {
            const std::string id = TestJson::messageId(phone.platform.webSocket.frames.back());
            const std::string granted = FuzzTelephone::subscription("s", std::to_string(texts), "Active", 60, quoted);
            phone.service->onMessage(FuzzTelephone::reply(id, granted));
        });
        phone.drive([&] {
            phone.service->onMessage("[{\"type\":\"ServerNotification\"},{\"event\":" + quoted +
                                     ",\"ownerId\":\"4711\",\"body\":{\"extensionId\":4711}}]");
        });
        phone.settle();
        if (!OrvaneEvent::isParsable(text)) {
            continue;
        }
        OrvaneEvent event(text, "4711");
        event.parse();
        OrvaneEvent copy(event);
        if (!copy.isEqual(event, true) || copy.uri() != text) {
            std::abort();
        }
        event.isEqual(former, true);
        former = event;
    }
    return 0;
}
