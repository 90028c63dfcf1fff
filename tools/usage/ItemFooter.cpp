#include "usage/ItemFooter.h"

#include "data/ItemNames.h"
#include "usage/ExitStatus.h"

std::string itemFooter() {
    std::string text = "Items; <N> is an index, as in FUNCTION_KEY_ID102=59:\n";
    for (const std::string& name : ItemNames::forms("<N>")) {
        text += "  " + name + "\n";
    }
    return text + "\n" + exitStatusHelp;
}
