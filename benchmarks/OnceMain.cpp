#include "JsonCases.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

/// What a profiler is to look at: nothing else calls it (valgrind --tool=callgrind --toggle-collect='measured(*').
[[gnu::noinline]] void measured(const std::function<void()>& work);
void measured(const std::function<void()>& work) {
    work();
    asm volatile("" ::: "memory"); // Keeps the call from becoming a jump, which a profiler would not see return.
}

int main(int argc, char** argv) try {
    const std::vector<JsonCase> cases = jsonCases();
    const int number = argc == 4 ? std::atoi(argv[1]) : -1;
    const std::string side = argc == 4 ? argv[2] : "";
    const int turns = argc == 4 ? std::atoi(argv[3]) : 0;
    if (number < 0 || number >= static_cast<int>(cases.size()) || (side != "ours" && side != "floor") || turns < 1) {
        std::fprintf(stderr, "usage: orvane-bench-once CASE ours|floor TURNS, with a CASE from 0 to %d\n",
                     static_cast<int>(cases.size()) - 1);
        return 2;
    }
    const JsonCase& one = cases[static_cast<std::size_t>(number)];
    for (int turn = 0; turn < turns; ++turn) {
        if (side == "ours") {
            one.prepare();
        }
        measured(side == "ours" ? one.ours : one.floor);
    }
    std::puts(one.name.c_str());
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "orvane-bench-once: %s\n", error.what());
    return 1;
}
