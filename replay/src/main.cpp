#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "common/Program.h"
#include "replay/Checker.h"
#include "replay/Player.h"
#include "replay/Plugin.h"
#include "replay/Script.h"
#include "replay/ScriptError.h"
#include "replay/Verbs.h"

namespace {

using namespace korvel::replay;

constexpr int kExitMismatch = 1;
constexpr int kExitTrouble = korvel::common::kExitMisused;
// A first difference often causes all that follow it.
constexpr std::size_t kMaxShownMismatches = 5;

struct Options {
    bool check = false;
    bool update = false;
    std::string plugin;
    std::vector<std::string> files;
};

std::string DefaultPlugin() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "korvel_digitalaudio.so";
}

int CheckFile(const std::string& path, CreationFunc create) {
    const Script script = ReadScript(path);
    const auto mismatches = Check(script, Play(script, create));
    for (std::size_t i = 0; i < mismatches.size() && i < kMaxShownMismatches; ++i)
        std::cout << mismatches[i].text;
    if (mismatches.size() > kMaxShownMismatches)
        std::cout << path << ": " << mismatches.size() - kMaxShownMismatches << " more inputs differ\n";
    return mismatches.empty() ? 0 : kExitMismatch;
}

int UpdateFile(const std::string& path, CreationFunc create) {
    const Script script = ReadScript(path);
    const std::string text = WithExpectations(script, Play(script, create));
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!(file << text) || !file.flush())
        throw ScriptError(path, "cannot be written");
    return 0;
}

int PrintFile(const std::string& path, CreationFunc create) {
    Play(ReadScript(path), create, &std::cout);
    return 0;
}

int RunFile(const Options& options, const std::string& path, CreationFunc create) {
    try {
        if (options.check)
            return CheckFile(path, create);
        return options.update ? UpdateFile(path, create) : PrintFile(path, create);
    } catch (const ScriptError& error) {
        std::cerr << error.what() << std::endl;
        return kExitTrouble;
    }
}

int Run(const Options& options) {
    const Plugin plugin(options.plugin.empty() ? DefaultPlugin() : options.plugin);
    int result = 0;
    std::size_t failed = 0;
    for (const std::string& path : options.files) {
        const int status = RunFile(options, path, plugin.GetCreation());
        result = std::max(result, status);
        failed += status != 0;
    }
    if (options.check && options.files.size() > 1)
        std::cout << options.files.size() - failed << " passed, " << failed << " failed\n";
    return result;
}

// Its own trouble is not to be taken for a transcript that differs.
int RunOrSayWhy(const Options& options) {
    try {
        return Run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "korvel-replay: %s\n", error.what());
        return kExitTrouble;
    }
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Plays transcripts of the digital-audio driver: feeds the driver the input lines of FILE and prints "
        "what it does.",
        "korvel-replay");
    app.footer("Input lines:\n" + DescribeVerbs());
    auto* check = app.add_flag("--check", options.check, "compare with the expectations in each FILE");
    app.add_flag("--update", options.update, "write what the driver does into FILE as its expectations")
        ->excludes(check);
    app.add_option("--plugin", options.plugin,
                   "the driver (default: korvel_digitalaudio.so beside this program)")
        ->type_name("PATH");
    app.add_option("FILE", options.files, "transcripts")->required()->type_name("");
    return korvel::common::RunProgram(app, argc, argv, [&options] { return RunOrSayWhy(options); });
}
