// Stands in for the suite's programs in tests: writes the arguments it was
// started with, argv[0] included, each ended by a NUL byte, to
// "$NEBRA_RECORDER_DIR/<pid>.argv", and ends. The file is written under a
// temporary name and renamed, so a test that sees it sees all of it.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <unistd.h>

int main(int argc, char** argv)
{
    const char* folder = std::getenv("NEBRA_RECORDER_DIR");
    if (!folder)
        return 2;
    const std::string base = std::string(folder) + "/" + std::to_string(getpid());
    const std::string temporary = base + ".tmp";
    std::FILE* file = std::fopen(temporary.c_str(), "wb");
    if (!file)
        return 3;
    for (int i = 0; i < argc; ++i)
        std::fwrite(argv[i], 1, std::strlen(argv[i]) + 1, file);
    if (std::fclose(file) != 0)
        return 4;
    return std::rename(temporary.c_str(), (base + ".argv").c_str()) == 0 ? 0 : 5;
}
