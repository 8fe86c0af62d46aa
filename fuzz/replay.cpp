// Runs a fuzz target over the files of its corpus, so that every build and every
// compiler replays what the fuzzer once found, without libFuzzer.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool Replay(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "replay: cannot read %s\n", file.c_str());
        return false;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::size_t replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path root(argv[i]);
        if (!std::filesystem::is_directory(root)) {
            if (!Replay(root)) {
                return 1;
            }
            ++replayed;
            continue;
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            if (entry.is_regular_file()) {
                if (!Replay(entry.path())) {
                    return 1;
                }
                ++replayed;
            }
        }
    }
    std::printf("replayed %zu inputs\n", replayed);
    return replayed == 0 ? 1 : 0;  // an empty corpus proves nothing
}
