#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTelephone.h"

/// A letter for the state of the channel, a line break, one frame a line. "ID" stands for the id of the latest request.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const unsigned state = input.choice(6);
    input.line();

    FuzzTelephone phone;
    OrvaneService& service = *phone.service;
    switch (state) {
    case 0:
        break; // never opened
    case 1:
        phone.logIn();
        phone.drive([&] { service.onOpen(0); });
        break;
    case 2:
        phone.openSession();
        break;
    case 3:
        phone.subscribe();
        break;
    case 4: // silence was noticed, and the new socket is not open yet
        phone.subscribe();
        phone.drive([&] { service.onPongTimeout(); });
        phone.settle();
        break;
    default: // open again, waiting for the session
        phone.subscribe();
        phone.drive([&] { service.onPongTimeout(); });
        phone.settle();
        phone.drive([&] { service.onOpen(0); });
    }
    for (int frames = 0; !input.atEnd() && frames < 16; ++frames) {
        std::string frame = input.line();
        const std::size_t id = frame.find("\"ID\"");
        if (id != std::string::npos && !phone.platform.webSocket.frames.empty()) {
            frame.replace(id + 1, 2, TestJson::messageId(phone.platform.webSocket.frames.back()));
        }
        phone.drive([&] { service.onMessage(frame); });
        phone.settle();
    }
    return 0;
}
