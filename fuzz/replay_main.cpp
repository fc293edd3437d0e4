// Runs a fuzz target over files: replay FILE ...; prints how many there were.
#include <fstream>
#include <iterator>

#include "fuzz_input.h"

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "cannot read %s\n", argv[i]);
            return 1;
        }
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("%d inputs\n", argc - 1);
    return argc > 1 ? 0 : 1;
}
