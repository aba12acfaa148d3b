// Replays inputs through a harness without libFuzzer, for the builds that are not
// the fuzz build: every argument is an input file or a folder of them (a folder
// that does not exist holds none). Any crash the fuzzer once found thus stays
// checked in the ordinary and sanitizer test runs.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
    namespace fs = std::filesystem;
    size_t replayed = 0;
    const auto replay = [&replayed](const fs::path& input) {
        std::ifstream in(input, std::ios::binary);
        std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        ++replayed;
    };
    for (int i = 1; i < argc; ++i) {
        std::error_code ec;
        if (fs::is_regular_file(argv[i], ec)) replay(argv[i]);
        for (const fs::directory_entry& entry : fs::directory_iterator(argv[i], ec)) {
            if (entry.is_regular_file()) replay(entry.path());
        }
    }
    printf("%zu inputs replayed\n", replayed);
    return 0;
}
