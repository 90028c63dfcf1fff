// A service that does not come down.
#include "support/IdleService.h"

#include <unistd.h>

namespace {

class StubbornService : public IdleService {
public:
    void shutdown() override {
        for (;;) {
            ::pause();
        }
    }
};

} // namespace

extern "C" Service* createOrvaneService() {
    return new StubbornService;
}
