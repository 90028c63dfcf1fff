#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTelephone.h"
#include "utilities/Serializer.h"

#include <cstdlib>
#include <set>

/// The stored ids of viewed calls, as a store that was written by another version may have them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const std::string stored = input.rest();
    std::set<std::string> ids;
    if (Serializer::deserialize(stored, ids)) {
        std::set<std::string> again;
        if (!Serializer::deserialize(Serializer::serialize(ids), again) || again != ids) {
            std::abort();
        }
    }

    FuzzTelephone phone;
    phone.platform.store.set(PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, stored);
    phone.logIn();
    for (const std::string& id : ids) {
        phone.drive([&] { phone.service->isMissedCallViewed(id); });
    }
    phone.drive([&] { phone.service->ageMissedCalls(ids); });
    phone.drive([&] { phone.service->ageMissedCall("2"); });
    return 0;
}
