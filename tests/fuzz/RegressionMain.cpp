// Replays inputs through a harness without libFuzzer, for the builds that are not
// the fuzz build: every argument is an input file or a folder of them (a folder
// that does not exist holds none). Any crash the fuzzer once found thus stays
// checked in the ordinary and sanitizer test runs.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        std::error_code ec;
        if (fs::is_directory(argv[i], ec)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(argv[i])) {
                if (entry.is_regular_file()) inputs.push_back(entry.path());
            }
        } else if (fs::exists(argv[i], ec)) {
            inputs.emplace_back(argv[i]);
        }
    }
    for (const fs::path& input : inputs) {
        std::ifstream in(input, std::ios::binary);
        std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)),
                                   std::istreambuf_iterator<char>());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    printf("%zu inputs replayed\n", inputs.size());
    return 0;
}
