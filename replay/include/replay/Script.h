// A transcript file as it stands: lines, and the blocks they form.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvel::replay {

// Longer files are refused.
inline constexpr std::size_t kMaxScriptLength = 64u << 20;

enum class LineKind {
    Comment,  // blank, or starts with '#'
    Exact,    // the word "exact" as the first line that is no comment
    Input,    // starts with a letter
    Expected, // starts with '<' or '='
    Forbidden // starts with '!'
};

struct ScriptLine {
    LineKind kind = LineKind::Comment;
    std::size_t number = 0; // from 1
    std::string text;       // without its line end
};

// One input line and all that follows it up to the next one. Positions are those in Script::lines.
struct Block {
    std::size_t input = 0;
    std::size_t end = 0; // one past the last line
};

struct Script {
    std::string name; // the file's, for messages
    bool exact = false;
    std::vector<ScriptLine> lines;
    std::vector<Block> blocks;
};

// Throws ScriptError for a line that starts with none of the characters above, or an expectation without an
// input.
Script ParseScript(const std::string& name, std::string_view text);
// Reads and parses a file. ScriptError also when it cannot be read or is too long.
Script ReadScript(const std::string& path);

} // namespace korvel::replay
