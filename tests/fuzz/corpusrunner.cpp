// Runs a fuzz target once over every file of the folders given, the way
// libFuzzer replays a corpus, for builds without libFuzzer. A missing folder
// counts as empty; a crash or sanitizer report fails the test.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv)
{
    namespace fs = std::filesystem;
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(argv[i], error))
            if (entry.is_regular_file())
                inputs.push_back(entry.path());
    }
    std::sort(inputs.begin(), inputs.end());
    for (const fs::path& path : inputs) {
        std::ifstream file(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file),
                                std::istreambuf_iterator<char>()};
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%zu inputs run\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
