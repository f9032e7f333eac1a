/*
 * A fuzz target's inputs played without libFuzzer, into the plug-in's own bundle (the one Mail
 * loads and the tests load), so that a fault in that bundle shows here as it shows to the
 * fuzzer. Plays every input file named, then as many variants again: each kept input with a
 * few bytes changed, inserted, dropped or spliced from another, drawn from a fixed seed, so two
 * runs play the same inputs. The target stops the process at the first failure, as it does
 * under libFuzzer; the input that failed is then written to PREFIX + "failed".
 *
 *   lorvane_play_day [--variants=N] [--seed=S] [--out=PREFIX] FILE...
 */

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

extern "C" int LLVMFuzzerInitialize(int *, char ***);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t length);

namespace {

using Input = std::vector<uint8_t>;

struct Options {
    unsigned variants = 1000;
    unsigned seed = 1;
    std::string out = "play-";
    std::vector<std::string> files;
};

Options readOptions(int argc, char **argv)
{
    Options options;
    for (int i = 1; i < argc; i++) {
        std::string argument = argv[i];
        if (argument.rfind("--variants=", 0) == 0)
            options.variants = unsigned(std::strtoul(argument.c_str() + 11, nullptr, 10));
        else if (argument.rfind("--seed=", 0) == 0)
            options.seed = unsigned(std::strtoul(argument.c_str() + 7, nullptr, 10));
        else if (argument.rfind("--out=", 0) == 0)
            options.out = argument.substr(6);
        else
            options.files.push_back(argument);
    }
    return options;
}

Input readInput(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return Input(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// The input being played, kept where the signal that stops the process can write it out.
Input playing;
std::string failurePath;

// Only calls safe in a signal handler.
void writePlayingAndStop(int signal)
{
    int file = open(failurePath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (file >= 0) {
        ssize_t written = write(file, playing.data(), playing.size());
        (void)written;
        close(file);
    }
    static const char note[] = "The input that failed is written to the --out prefix + \"failed\".\n";
    ssize_t written = write(STDERR_FILENO, note, sizeof note - 1);
    (void)written;
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void writeInputOnFailure()
{
    for (int signal : { SIGABRT, SIGSEGV, SIGBUS, SIGILL, SIGFPE })
        std::signal(signal, writePlayingAndStop);
}

void play(const Input &input)
{
    playing = input;
    LLVMFuzzerTestOneInput(playing.data(), playing.size());
}

// One of libFuzzer's own kinds of change, at a random place.
Input variant(const std::vector<Input> &kept, std::mt19937 &random)
{
    Input input = kept[random() % kept.size()];
    unsigned changes = 1 + random() % 4;
    for (unsigned i = 0; i < changes; i++) {
        size_t at = input.empty() ? 0 : random() % input.size();
        switch (random() % 4) {
        case 0:
            if (!input.empty())
                input[at] = uint8_t(random());
            break;
        case 1:
            input.insert(input.begin() + std::ptrdiff_t(at), uint8_t(random()));
            break;
        case 2:
            if (!input.empty())
                input.erase(input.begin() + std::ptrdiff_t(at));
            break;
        default: {
            const Input &other = kept[random() % kept.size()];
            size_t from = other.empty() ? 0 : random() % other.size();
            size_t length = std::min<size_t>(other.size() - from, 1 + random() % 64);
            input.insert(input.begin() + std::ptrdiff_t(at), other.begin() + std::ptrdiff_t(from), other.begin() + std::ptrdiff_t(from + length));
        }
        }
    }
    return input;
}

} // namespace

int main(int argc, char **argv)
{
    Options options = readOptions(argc, argv);
    failurePath = options.out + "failed";
    writeInputOnFailure();
    LLVMFuzzerInitialize(&argc, &argv);
    std::vector<Input> kept;
    for (const std::string &file : options.files)
        kept.push_back(readInput(file));
    if (kept.empty())
        kept.push_back(Input());
    for (const Input &input : kept)
        play(input);
    std::mt19937 random(options.seed);
    for (unsigned i = 0; i < options.variants; i++)
        play(variant(kept, random));
    printf("%zu inputs and %u variants played\n", options.files.size(), options.variants);
    return 0;
}
