#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTelephone.h"
#include "transport/JsonProtocolAdapter.h"
#include "unit/OrvaneServiceInvoker/RemoteCall.h"

/// Messages of other processes, one a line, to the real service.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    FuzzTelephone phone;
    phone.logIn();
    JsonProtocolAdapter adapter;
    ScriptedFramework framework;
    framework.adapter = &adapter;
    OrvaneServiceInvoker invoker;
    invoker.initInvoker(&framework);
    for (int messages = 0; !input.atEnd() && messages < 16; ++messages) {
        const std::string message = input.line();
        ResponseRecord record;
        phone.drive([&] {
            invoker.handleMessage(phone.service.get(), message.data(), static_cast<int>(message.size()),
                                  new RecordingResponse(record));
        });
        phone.settle();
    }
    return 0;
}
