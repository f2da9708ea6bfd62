// The page of commands tells what the command table holds, no more and no less.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "TestCore.h"
#include "driver/korvel_digitalaudio.h"

namespace {

// By name: the parameters and what it does.
using Rows = std::map<std::string, std::pair<std::string, std::string>>;

std::string Trimmed(const std::string& cell) {
    const std::size_t first = cell.find_first_not_of(' ');
    return first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(' ') - first + 1);
}

// The table rows of three cells whose first is a name in capitals.
Rows DescribedRows() {
    std::ifstream page(KORVEL_COMMANDS_PAGE);
    Rows rows;
    for (std::string line; std::getline(page, line);) {
        std::vector<std::string> cells;
        std::istringstream row(line);
        for (std::string cell; std::getline(row, cell, '|');)
            cells.push_back(Trimmed(cell));
        // The row begins with a bar, so its first cell comes second.
        if (cells.size() == 4 && cells[1].size() >= 4 &&
            cells[1].find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_") == std::string::npos)
            rows[cells[1]] = {cells[2], cells[3]};
    }
    return rows;
}

Rows TableRows() {
    Rows rows;
    for (const auto& command : korvel_digitalaudio::Commands()) {
        const std::string required = command.required, others = command.others;
        rows[command.name] = {required + (required.empty() || others.empty() ? "" : ", ") + others,
                              command.help};
    }
    for (const auto& request : korvel_digitalaudio::Requests())
        rows[request.name] = {request.others, request.help};
    return rows;
}

TEST(CommandTable, IsWhatThePageTells) {
    const Rows described = DescribedRows();
    const Rows table = TableRows();
    for (const auto& [name, row] : table) {
        ASSERT_TRUE(described.count(name)) << name << " is not described";
        EXPECT_EQ(described.at(name).first, row.first) << name;
        EXPECT_EQ(described.at(name).second, row.second) << name;
    }
    for (const auto& entry : described)
        EXPECT_TRUE(table.count(entry.first)) << entry.first << " is described, but not in the table";
}

// Each required parameter is missed alone: empty, then absent.
TEST(CommandTable, ARequiredParameterThatIsMissingEndsTheCommandInSilence) {
    TestCore core;
    core.Run({"song 2 location=/media/2.flac", "start", "online 3000 127.0.0.1",
              "command ADD_SONG ROOM_ID=7 MEDIA_ID=2"});
    for (const auto& command : korvel_digitalaudio::Commands()) {
        std::vector<std::string> required;
        ASPacket::SplitPacket(command.required, ", ", required, 0);
        for (const std::string& missing : required) {
            std::string line = std::string("command ") + command.name;
            for (const std::string& name : required)
                line += name == missing ? "" : " " + name + "=7";
            EXPECT_EQ(core.Run(line), std::vector<std::string>{}) << line;
            line += " " + missing + "=\"\"";
            EXPECT_EQ(core.Run(line), std::vector<std::string>{}) << line;
        }
    }
}

} // namespace
