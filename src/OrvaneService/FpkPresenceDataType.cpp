#include "OrvaneService/FpkPresenceDataType.h"

namespace {

std::array<std::array<std::string, 16>, 10> makeFpkIndexTable() {
    std::array<std::array<std::string, 16>, 10> table;
    for (std::size_t bank = 0; bank < table.size(); ++bank) {
        for (std::size_t key = 0; key < table[bank].size(); ++key) {
            table[bank][key] = std::to_string((bank + 1) * 100 + key);
        }
    }
    return table;
}

} // namespace

const std::array<std::array<std::string, 16>, 10> fpkIndexTable = makeFpkIndexTable();
const std::string FPK_FUNCTION_BLF = "59";
const std::string BLF_URI_PREFIX = "blf";
