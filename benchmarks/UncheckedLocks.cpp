#include "LockDiscipline.h"

// The unit tests check the order of semaphores; here they only have to work.

void LockDiscipline::nameNext(std::vector<std::string>) {}
std::string LockDiscipline::takeName() {
    return std::string();
}
void LockDiscipline::taken(const std::string&) {}
void LockDiscipline::given(const std::string&) {}
void LockDiscipline::checkRequest() {}
void LockDiscipline::checkSleep() {}
void LockDiscipline::checkNothingHeld() {}
void LockDiscipline::checkConnectionUse() {}
void LockDiscipline::addToTrace(const std::string&) {}
