#include "run/steps.h"

#include <fmt/format.h>

#include <utility>

namespace runhost {

Steps::Steps(RunReport& report, const Backend& backend) : m_report(report), m_timeLine(backend) {
    m_report.succeeded = true;
    takeLog();
}

void Steps::stage(const char* title, const char* explanation) {
    m_report.stages.push_back({title, explanation, {}});
    m_timeLine.enter(title);
}

CallReport& Steps::hook(const char* name, const std::function<bool()>& call) {
    return add(name, false, call);
}

CallReport& Steps::hostStep(const char* name, const std::function<bool()>& call) {
    return add(name, true, call);
}

CallReport& Steps::add(const char* name, bool byHost, const std::function<bool()>& call) {
    const bool succeeded = call();
    calls().push_back({name, byHost, Outcome::OK, {}, {}, takeLog()});
    if (!succeeded) fail(calls().back());
    return calls().back();
}

void Steps::skip(const char* name, std::string reason) {
    calls().push_back({name, false, Outcome::SKIPPED, std::move(reason), {}, {}});
}

void Steps::fail(CallReport& call) {
    call.outcome = Outcome::FAILED;
    m_report.succeeded = false;
}

std::vector<CallReport>& Steps::calls() {
    return m_report.stages.back().calls;
}

std::string counted(size_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

}  // namespace runhost
