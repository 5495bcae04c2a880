#include "compliance/Report.h"

#include <nlohmann/json.hpp>

namespace compliance {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* WORDS[] = {"ok", "FAILED", "not checked"};
constexpr const char* KEYS[] = {"ok", "failed", "notChecked"};

// Names of symbols and messages of the loader may be any bytes.
std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

void Report::add(const std::string& check, const std::string& page, const Verdict& verdict) {
    ++mCounts[verdict.kind];
    mJson ? printJson(check, page, verdict) : printLine(check, page, verdict);
    mOut << std::flush;
}

void Report::printLine(const std::string& check, const std::string& page, const Verdict& verdict) {
    mOut << WORDS[verdict.kind] << "  " << check;
    if (verdict.kind == Verdict::FAILED) {
        mOut << ": expected " << verdict.expected << "; seen: " << verdict.seen << "; see " << page;
    } else if (!verdict.seen.empty()) {
        mOut << ": " << verdict.seen;
    }
    mOut << '\n';
}

void Report::printJson(const std::string& check, const std::string& page, const Verdict& verdict) {
    Json line = {{"check", check}, {"verdict", KEYS[verdict.kind]}};
    if (verdict.kind == Verdict::FAILED) line["expected"] = verdict.expected;
    if (!verdict.seen.empty()) line["seen"] = verdict.seen;
    line["page"] = page;
    mOut << dump(line) << '\n';
}

bool Report::finish() {
    if (mJson) {
        Json totals;
        for (const auto kind : {Verdict::OK, Verdict::FAILED, Verdict::NOT_CHECKED}) totals[KEYS[kind]] = count(kind);
        mOut << dump(totals) << std::endl;
    } else {
        mOut << count(Verdict::OK) << " ok, " << count(Verdict::FAILED) << " failed, " << count(Verdict::NOT_CHECKED)
             << " not checked" << std::endl;
    }
    return count(Verdict::FAILED) == 0 && count(Verdict::OK) > 0;
}

}  // namespace compliance
