#include "replay/Player.h"

#include <exception>

#include "replay/ScriptError.h"
#include "replay/Session.h"

namespace korvel::replay {

RunLines Play(const Script& script, CreationFunc create, std::ostream* echo) {
    Session session(create, echo);
    Recorder& recorder = session.GetWorld().recorder;
    RunLines run;
    for (const ScriptLine& line : script.lines) {
        if (line.kind == LineKind::Exact)
            recorder.Input(line.text);
        if (line.kind != LineKind::Input)
            continue;
        recorder.Input(line.text);
        try {
            session.Execute(line.text);
        } catch (const std::exception& error) {
            throw ScriptError(script.name, line.number, error.what());
        }
        run.push_back(recorder.TakeLines());
    }
    return run;
}

} // namespace korvel::replay
