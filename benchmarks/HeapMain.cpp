#include "BenchTelephone.h"
#include "Bodies.h"
#include "HeapMeter.h"

#include <jansson.h>

#include <cstdio>
#include <exception>
#include <string>

namespace {

void print(const char* name, double ours, double floor, double ratio, double target, const char* unit) {
    std::printf("{\"name\":\"%s\",\"ours\":%.1f,\"floor\":%.1f,\"ratio\":%.3f,\"target\":%.2f,\"unit\":\"%s\"}\n", name,
                ours, floor, ratio, target, unit);
}

/// Texts of the records as an observer is given them; what any keeper of them has to hold.
std::size_t textBytes(int calls, int contacts) {
    BenchTelephone telephone;
    telephone.loadCalls(calls);
    std::string page = Bodies::phonebookPage(0, contacts, "token");
    telephone.takePhonebookPage(page);
    return telephone.observedBytes();
}

void measureHeld() {
    const std::size_t texts = textBytes(1000, 250);
    BenchTelephone telephone;
    telephone.forgetRecords();
    const std::size_t before = HeapMeter::bytesInUse();
    telephone.loadLines(20);
    telephone.loadCalls(1000);
    for (int first = 0; first < 250; first += 50) {
        std::string page = Bodies::phonebookPage(first, 50, "token-" + std::to_string(first));
        telephone.takePhonebookPage(page);
    }
    telephone.forgetRecords();
    const double held = static_cast<double>(HeapMeter::bytesInUse() - before);
    print("heap of 1,000 calls, 250 contacts and 20 lines", held, static_cast<double>(texts),
          held / static_cast<double>(texts), 2.2, "bytes");
}

void measureResponse() {
    BenchTelephone telephone;
    std::string body = Bodies::callLog(0, 100);
    const auto length = static_cast<double>(body.size());

    std::size_t before = HeapMeter::bytesInUse();
    std::size_t count = HeapMeter::allocations();
    HeapMeter::startPeak();
    json_decref(json_loads(body.c_str(), 0, nullptr));
    const auto floorPeak = static_cast<double>(HeapMeter::peak() - before);
    const auto floorCount = static_cast<double>(HeapMeter::allocations() - count);

    before = HeapMeter::bytesInUse();
    count = HeapMeter::allocations();
    HeapMeter::startPeak();
    telephone.takeCallLog(body);
    const auto peak = static_cast<double>(HeapMeter::peak() - before);
    const auto ours = static_cast<double>(HeapMeter::allocations() - count);

    print("peak heap of a 100-record response, by its length", peak, length, peak / length, 6.8, "bytes");
    print("the same by json_loads alone", floorPeak, length, floorPeak / length, 6.8, "bytes");
    print("allocations a record beyond Jansson's", ours / 100, floorCount / 100, (ours - floorCount) / 100, 8, "count");
}

} // namespace

int main() try {
    measureHeld();
    measureResponse();
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "orvane-bench-heap: %s\n", error.what());
    return 1;
}
