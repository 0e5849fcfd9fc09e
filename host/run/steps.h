// Writes down what the host does, stage by stage and call by call.
#pragma once

#include <functional>
#include <string>

#include "records/time_line.h"
#include "report/run_report.h"

namespace runhost {

class Steps {
public:
    // Both have to outlive it. Succeeded is true until a call fails.
    Steps(RunReport& report, const Backend& backend);

    // The next calls and votes belong to this stage.
    void stage(const char* title, const char* explanation);
    // Runs a hook, or a step of the host's own, and adds it to the stage with the log lines that came meanwhile. call:
    // whether it succeeded. The reference is good until the next call.
    CallReport& hook(const char* name, const std::function<bool()>& call);
    CallReport& hostStep(const char* name, const std::function<bool()>& call);
    void skip(const char* name, std::string reason);
    // For a call whose answer alone does not tell.
    void fail(CallReport& call);

    // The newest stage's.
    std::vector<CallReport>& calls();
    RunReport& report() { return m_report; }
    TimeLine& timeLine() { return m_timeLine; }

private:
    CallReport& add(const char* name, bool byHost, const std::function<bool()>& call);

    RunReport& m_report;
    TimeLine m_timeLine;
};

// "1 record", "2 records".
std::string counted(size_t count, const char* noun);

}  // namespace runhost
