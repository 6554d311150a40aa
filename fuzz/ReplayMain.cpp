// The harnesses' main when they are built without libFuzzer: runs every input named on the
// command line (a file, or every file of a directory) once through the harness, so that an
// ordinary build and test run checks the seed corpora under the compiler and sanitizers it
// uses. A harness that finds a problem aborts, as it does under libFuzzer.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// Optional in a harness, as with libFuzzer.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) __attribute__((weak));

namespace
{
// The files to run: a directory's regular files in name order, so a failure names the same
// input every time.
std::vector<std::filesystem::path> Inputs(const std::filesystem::path& argument)
{
    if (!std::filesystem::is_directory(argument))
    {
        return {argument};
    }
    std::vector<std::filesystem::path> files;
    for (const std::filesystem::directory_entry& entry : std::filesystem::directory_iterator(argument))
    {
        if (entry.is_regular_file())
        {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool RunOne(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
    {
        std::cerr << "cannot read " << file.string() << "\n";
        return false;
    }
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    // A buffer of exactly the input's size, so the address sanitizer sees a read past its end.
    const std::unique_ptr<std::uint8_t[]> data(new std::uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), data.get());
    LLVMFuzzerTestOneInput(data.get(), bytes.size());
    return true;
}
} // namespace

int main(int argc, char** argv)
{
    if (LLVMFuzzerInitialize != nullptr)
    {
        LLVMFuzzerInitialize(&argc, &argv);
    }
    if (argc < 2)
    {
        std::cerr << "usage: " << argv[0] << " FILE-OR-DIRECTORY...\n";
        return 2;
    }
    std::size_t runs = 0;
    for (int i = 1; i < argc; ++i)
    {
        const std::vector<std::filesystem::path> files = Inputs(argv[i]);
        if (files.empty())
        {
            std::cerr << "no inputs in " << argv[i] << "\n";
            return 1;
        }
        for (const std::filesystem::path& file : files)
        {
            if (!RunOne(file))
            {
                return 1;
            }
            ++runs;
        }
    }
    std::cout << "ran " << runs << " inputs\n";
    return 0;
}
