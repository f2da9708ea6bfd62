#include "replay/Checker.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "replay/Words.h"

namespace korvel::replay {

namespace {

bool SameLine(std::string_view a, std::string_view b) {
    return TrimEnd(a) == TrimEnd(b);
}

// What a '!' line forbids `<` lines to start with.
std::string ForbiddenStart(const ScriptLine& line) {
    return "< " + std::string(TrimEnd(TrimStart(std::string_view(line.text).substr(1))));
}

// Collects what is wrong with one block.
class BlockCheck {
public:
    BlockCheck(const Script& script, const Block& block, const std::vector<std::string>& given)
        : m_script(script), m_block(block), m_given(given), m_matched(given.size(), false) {}

    std::optional<Mismatch> Run() {
        const auto complaint = FindForbidden();
        const auto order = m_script.exact ? FindDifference() : FindMissing();
        if (complaint || order)
            return Describe(complaint ? *complaint : *order);
        return std::nullopt;
    }

private:
    std::optional<std::string> FindForbidden() const {
        for (std::size_t i = m_block.input; i < m_block.end; ++i) {
            const ScriptLine& line = m_script.lines[i];
            if (line.kind != LineKind::Forbidden)
                continue;
            const std::string start = ForbiddenStart(line);
            for (const std::string& text : m_given) {
                if (text.starts_with(start))
                    return At(line) + "forbidden: " + text;
            }
        }
        return std::nullopt;
    }

    // The earliest match of each line leaves the most room for those after it.
    std::optional<std::string> FindMissing() {
        std::size_t next = 0;
        for (std::size_t i = m_block.input; i < m_block.end; ++i) {
            const ScriptLine& line = m_script.lines[i];
            if (line.kind != LineKind::Expected)
                continue;
            std::size_t found = next;
            while (found < m_given.size() && !SameLine(line.text, m_given[found]))
                ++found;
            if (found == m_given.size())
                return At(line) + "missing: " + line.text;
            m_matched[found] = true;
            next = found + 1;
        }
        return std::nullopt;
    }

    std::optional<std::string> FindDifference() {
        std::size_t next = 0;
        for (std::size_t i = m_block.input; i < m_block.end; ++i) {
            const ScriptLine& line = m_script.lines[i];
            if (line.kind != LineKind::Expected)
                continue;
            if (next == m_given.size())
                return At(line) + "missing: " + line.text;
            if (!SameLine(line.text, m_given[next]))
                return At(line) + "expected: " + line.text + "\n  but found: " + m_given[next];
            m_matched[next++] = true;
        }
        if (next < m_given.size())
            return "not expected: " + m_given[next];
        return std::nullopt;
    }

    std::string At(const ScriptLine& line) const { return "line " + std::to_string(line.number) + " "; }

    Mismatch Describe(const std::string& complaint) const {
        const ScriptLine& input = m_script.lines[m_block.input];
        std::string text = m_script.name + ":" + std::to_string(input.number) + ": " + input.text + "\n";
        text.append("  ").append(complaint).append("\n");
        text.append(m_given.empty() ? "  there was no output\n" : "  there was (* is as expected):\n");
        for (std::size_t i = 0; i < m_given.size(); ++i)
            text.append(m_matched[i] ? "  * " : "    ").append(m_given[i]).append("\n");
        return {input.number, text};
    }

    const Script& m_script;
    const Block& m_block;
    const std::vector<std::string>& m_given;
    std::vector<bool> m_matched;
};

// Writes one block's lines with `given` in place of its expectations.
void AppendBlock(const Script& script, const Block& block, const std::vector<std::string>& given,
                 std::string& out) {
    std::size_t lastExpected = block.input;
    for (std::size_t i = block.input; i < block.end; ++i) {
        if (script.lines[i].kind == LineKind::Expected)
            lastExpected = i;
    }

    auto next = given.begin();
    const auto writeUpTo = [&](auto end) {
        for (; next != end; ++next)
            out.append(TrimEnd(*next)).append("\n");
    };
    for (std::size_t i = block.input; i < block.end; ++i) {
        const ScriptLine& line = script.lines[i];
        if (line.kind == LineKind::Expected) {
            const auto found = std::find_if(
                next, given.end(), [&](const std::string& text) { return SameLine(text, line.text); });
            if (found != given.end())
                writeUpTo(found + 1);
        } else {
            out.append(line.text).append("\n");
        }
        if (i == lastExpected)
            writeUpTo(given.end());
    }
}

} // namespace

std::vector<Mismatch> Check(const Script& script, const RunLines& run) {
    std::vector<Mismatch> mismatches;
    for (std::size_t i = 0; i < script.blocks.size(); ++i) {
        if (auto mismatch = BlockCheck(script, script.blocks[i], run.at(i)).Run())
            mismatches.push_back(std::move(*mismatch));
    }
    return mismatches;
}

std::string WithExpectations(const Script& script, const RunLines& run) {
    std::string out;
    const std::size_t firstInput = script.blocks.empty() ? script.lines.size() : script.blocks.front().input;
    for (std::size_t i = 0; i < firstInput; ++i)
        out.append(script.lines[i].text).append("\n");
    for (std::size_t i = 0; i < script.blocks.size(); ++i)
        AppendBlock(script, script.blocks[i], run.at(i), out);
    return out;
}

} // namespace korvel::replay
