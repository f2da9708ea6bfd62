// What made-up sessions are made of: lines of input, and values that mean something in them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Dice.h"

namespace fuzz {

// The few values that words of one kind have, so that lines meet: rooms, queues, media, flags and so on. The first is
// the usual one.
using Pool = std::vector<std::string>;

// The values of a parameter of a command or a field of a line; null for a name that nothing reads.
const Pool* PoolOf(std::string_view name);
// The parameters of commands that PoolOf knows.
std::vector<std::string> ParameterNames();
// Any of the pools in which `value` stands, or null.
const Pool* PoolWith(std::string_view value, Dice& dice);

// A command or a request with the parameters that it reads, as the driver's tables have them.
struct CommandWords {
    std::string verb; // "command" or "request"
    std::string name;
    std::vector<std::string> parameters;
};
const std::vector<CommandWords>& AllCommands();

// Every line that an audio server may say of a stream, `number` being that of the line that it answers.
std::vector<std::string> ServerLines(std::uint32_t number, std::uint32_t stream);

// A line that may come at any time, within a call of a service, too.
std::string AnyEntry(Dice& dice);
// Any line: also the world, and the driver's start and end.
std::string AnyLine(Dice& dice);

} // namespace fuzz
