#include "replay/Script.h"

#include <fstream>
#include <iterator>

#include "replay/ScriptError.h"
#include "replay/Words.h"

namespace korvel::replay {

namespace {

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

LineKind KindOf(const Script& script, const ScriptLine& line, bool first) {
    if (TrimStart(line.text).empty() || line.text.front() == '#')
        return LineKind::Comment;
    const char start = line.text.front();
    if (first && TrimEnd(line.text) == "exact")
        return LineKind::Exact;
    if (IsLetter(start))
        return LineKind::Input;
    if (start != '<' && start != '=' && start != '!')
        throw ScriptError(script.name, line.number, "a line starts with a letter or with one of # < = !");
    if (script.blocks.empty())
        throw ScriptError(script.name, line.number, "an expectation stands under an input line");
    return start == '!' ? LineKind::Forbidden : LineKind::Expected;
}

} // namespace

Script ParseScript(const std::string& name, std::string_view text) {
    Script script;
    script.name = name;
    bool first = true;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        ScriptLine line;
        line.number = script.lines.size() + 1;
        line.text = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (!line.text.empty() && line.text.back() == '\r')
            line.text.pop_back();

        line.kind = KindOf(script, line, first);
        first = first && line.kind == LineKind::Comment;
        script.exact = script.exact || line.kind == LineKind::Exact;
        if (line.kind == LineKind::Input)
            script.blocks.push_back({script.lines.size(), 0});
        script.lines.push_back(std::move(line));
        if (!script.blocks.empty())
            script.blocks.back().end = script.lines.size();
    }
    return script;
}

Script ReadScript(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw ScriptError(path, "cannot be opened");
    std::string text;
    char piece[65536];
    while (file.read(piece, sizeof piece) || file.gcount() > 0) {
        text.append(piece, static_cast<std::size_t>(file.gcount()));
        if (text.size() > kMaxScriptLength)
            throw ScriptError(path, "is longer than " + std::to_string(kMaxScriptLength) + " bytes");
    }
    if (file.bad() || !file.eof())
        throw ScriptError(path, "cannot be read");
    return ParseScript(path, text);
}

} // namespace korvel::replay
