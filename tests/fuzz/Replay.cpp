#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs every file of the folder once, as a test.
int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    int files = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1], error)) {
        std::ifstream stream(entry.path(), std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        // Said before, so that the last line names the file that ended the process.
        std::printf("%s\n", entry.path().filename().c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        ++files;
    }
    std::printf("%d inputs\n", files);
    return files > 0 ? 0 : 1;
}
