#include "JsonCases.h"

#include "BenchTelephone.h"
#include "Bodies.h"

#include <jansson.h>

#include <memory>
#include <stdexcept>

namespace {

/// The test platform exists once at a time: the telephone is made anew for each case.
std::unique_ptr<BenchTelephone> telephone;

BenchTelephone& freshTelephone() {
    telephone.reset();
    telephone = std::make_unique<BenchTelephone>();
    return *telephone;
}

std::function<void()> parseAndRelease(std::string text) {
    return [text = std::move(text)] {
        json_t* root = json_loads(text.c_str(), 0, nullptr);
        if (root == nullptr) {
            throw std::runtime_error("the floor cannot parse its text");
        }
        json_decref(root);
    };
}

void require(std::size_t found, std::size_t wanted, const char* what) {
    if (found != wanted) {
        throw std::runtime_error(std::string(what) + ": " + std::to_string(found) +
                                 " records reached the observer, not " + std::to_string(wanted));
    }
}

JsonCase newCalls(std::string name, double target, int loaded, int count) {
    auto ready = std::make_shared<bool>(false);
    auto body = std::make_shared<std::string>(Bodies::callLog(loaded, count));
    auto removal = std::make_shared<std::string>(Bodies::callLog(loaded, count, true));
    const auto wanted = static_cast<std::size_t>(count);
    return {std::move(name), target,
            [=] {
                if (!*ready) {
                    freshTelephone().loadCalls(loaded);
                    *ready = true;
                } else {
                    require(telephone->takeCallLog(*removal), wanted, "removal of calls");
                }
                telephone->forgetWrites();
            },
            [=] { require(telephone->takeCallLog(*body), wanted, "new calls"); }, parseAndRelease(*body)};
}

JsonCase sameCalls() {
    auto ready = std::make_shared<bool>(false);
    auto body = std::make_shared<std::string>(Bodies::callLog(0, 100));
    return {"call log, the same 100 records again", 1.20,
            [=] {
                if (!*ready) {
                    freshTelephone().loadCalls(100);
                    *ready = true;
                }
                telephone->forgetWrites();
            },
            [=] { require(telephone->takeCallLog(*body), 0, "unchanged calls"); }, parseAndRelease(*body)};
}

JsonCase phonebookPage() {
    auto ready = std::make_shared<bool>(false);
    auto page = std::make_shared<std::string>(Bodies::phonebookPage(0, 50, "BBsynctoken-1"));
    auto removal = std::make_shared<std::string>(Bodies::phonebookPage(0, 50, "BBsynctoken-2", true));
    return {"phonebook page of 50", 1.30,
            [=] {
                if (!*ready) {
                    freshTelephone();
                    *ready = true;
                } else {
                    require(telephone->takePhonebookPage(*removal), 50, "removal of contacts");
                }
            },
            [=] { require(telephone->takePhonebookPage(*page), 50, "new contacts"); }, parseAndRelease(*page)};
}

JsonCase presenceFrame() {
    auto ready = std::make_shared<bool>(false);
    const std::string frame = Bodies::ringingFrame();
    return {"presence frame, no ended call", 1.60,
            [=] {
                if (!*ready) {
                    freshTelephone().requireTaken(frame);
                    *ready = true;
                }
            },
            [=] { telephone->takeFrame(frame); }, parseAndRelease(frame)};
}

} // namespace

std::vector<JsonCase> jsonCases() {
    return {newCalls("call log, 100 new records", 1.25, 0, 100),
            sameCalls(),
            phonebookPage(),
            presenceFrame(),
            newCalls("one new record, 50 calls in the map", 1.50, 50, 1),
            newCalls("one new record, 5,000 calls in the map", 1.50, 5000, 1)};
}
