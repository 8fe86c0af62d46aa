#include "kelpctl/call.h"

#include <chrono>
#include <cmath>
#include <iostream>
#include <memory>
#include <mutex>

#include "frameutil/msg.h"
#include "frameutil/paraset.h"
#include "frameutil/records.h"
#include "kelp/log.h"
#include "kelp/task.h"
#include "kelpctl/answer.h"
#include "kelpctl/json_text.h"
#include "kelpctl/quiet_log.h"
#include "kelpctl/status.h"
#include "kelpctl/table_text.h"
#include "kelpctl/wire.h"
#include "support/file.h"
#include "support/json.h"
#include "support/numbers.h"
#include "support/utf8.h"

namespace kelpctl {
namespace {

int Fail(int status, const std::string& text) {
    std::cerr << "kelpctl: " << text << '\n';
    return status;
}

// The platform explains a failure in its log, which a command line tool keeps quiet about
// unless it is asked for; the last explanation goes into the one line that is printed.
class LastComplaint final : public kelp::log::Sink {
  public:
    void Write(const kelp::log::Record& record) override {
        const std::lock_guard lock(mutex_);
        text_ = record.text;
    }
    std::string Text() {
        const std::lock_guard lock(mutex_);
        return app::ShowText(text_);
    }

  private:
    std::mutex mutex_;
    std::string text_;
};

// This process as a client on the bus, for the length of one call.
class BusClient {
  public:
    explicit BusClient(const std::string& run_dir) : complaint_(std::make_shared<LastComplaint>()) {
        QuietLog();
        kelp::log::AddSink(complaint_, kelp::log::Level::kWarn);
        KelpAppOptions options;
        options.runDir = run_dir;
        connected_ = KelpAppMgr::Initialize(options);
    }
    ~BusClient() {
        KelpAppMgr::Destroy();
        kelp::log::RemoveSink(complaint_.get());
        LogProcess::Destroy();
    }
    BusClient(const BusClient&) = delete;
    BusClient& operator=(const BusClient&) = delete;

    bool Connected() const { return connected_; }
    std::string Complaint() { return complaint_->Text(); }

  private:
    std::shared_ptr<LastComplaint> complaint_;
    bool connected_ = false;
};

bool CollectArguments(const Options& options, Arguments& arguments, std::string& why) {
    for (const std::string& pair : options.pairs) {
        if (!AddPair(pair, arguments, why)) {
            return false;
        }
    }
    if (options.arguments_file.empty()) {
        return true;
    }
    std::string text;
    if (!app::ReadFile(options.arguments_file, app::kJsonLimitBytes, text, why)) {
        return false;
    }
    if (!AddObject(text, arguments, why)) {
        why = options.arguments_file + ": " + why;
        return false;
    }
    return true;
}

std::string NameOfTarget(const Target& target) {
    const std::string number = std::to_string(target.proc_type) +
                               (target.handle != 0 ? '.' + std::to_string(target.handle) : "");
    return target.process != nullptr ? app::ShowText(target.process->name) + " (" + number + ")"
                                     : "process " + number;
}

std::string NameOfCommand(std::uint32_t code, const Target& target) {
    const Command* command = target.process != nullptr ? target.process->Find(code) : nullptr;
    return command != nullptr ? app::ShowText(command->name) + " (" + std::to_string(code) + ")"
                              : std::to_string(code);
}

// "20: the element does not answer: 127.0.0.1:9 (Check the address.)": from the answer itself
// or, where it says nothing, from the commands file.
std::string ReasonOf(std::int64_t code, const ErrorRow& row, const Target& target) {
    std::string text = std::to_string(code);
    std::string meaning = row.text;
    if (meaning.empty() && target.process != nullptr) {
        const auto known = target.process->results.find(code);
        meaning = known != target.process->results.end() ? known->second : "";
    }
    for (const std::string& part : {meaning, row.item}) {
        if (!part.empty()) {
            text += ": " + app::ShowText(part);
        }
    }
    if (!row.advice.empty()) {
        text += " (" + app::ShowText(row.advice) + ")";
    }
    return text;
}

int Show(Answer answer, const Options& options, const Target& target, const std::string& command) {
    const std::int64_t code = answer.ret_code;
    if (options.json) {
        PrintJson(answer, std::cout);
    }
    const ErrorRow error = TakeErrorRow(answer).value_or(ErrorRow{});
    if (!options.json) {
        PrintText(answer, options.most_rows, std::cout);
    }
    std::cout.flush();
    const int status = StatusOfResult(code);
    return code == 0 ? status : Fail(status, command + ": result " + ReasonOf(code, error, target));
}

}  // namespace

int Call(const Options& options, const std::vector<Process>& processes) {
    std::string why;
    const auto target = FindTarget(options.target, processes, why);
    if (!target) {
        return Fail(kUsage, why);
    }
    const auto code = FindCommand(options.command, *target, why);
    if (!code) {
        return Fail(kUsage, why);
    }
    Arguments arguments;
    if (!CollectArguments(options, arguments, why)) {
        return Fail(kUsage, why);
    }
    const std::string target_name = NameOfTarget(*target);
    const std::string command_name = NameOfCommand(*code, *target);

    FrameUtil::CParaSet parameters("request");
    FillRequest(arguments, options.user_id, parameters);
    FrameUtil::AsnCommonRequest request;
    parameters.Para2CommonReqAsn(request);

    BusClient bus(options.run_dir);
    if (!bus.Connected()) {
        return Fail(kUnreachable, "the message bus cannot be used: " + bus.Complaint());
    }
    if (options.verbose) {
        AsnBuffer octets;
        AsnEncode(request, octets);
        std::cerr << "-> " << command_name << " to " << target_name << ": "
                  << OutlineOf(octets.data(), octets.size()) << '\n';
    }
    ObservedResponse response;
    const auto start = std::chrono::steady_clock::now();
    const int result = FrameUtil::SynSendMsg({target->proc_type, target->handle, 0, 0}, *code,
                                             request, &response, options.timeout_seconds);
    const auto waited = std::chrono::steady_clock::now() - start;
    if (result != 0) {
        const Failure failure = FailureOfCall(static_cast<std::uint32_t>(result), target_name,
                                              command_name, options.timeout_seconds);
        return Fail(failure.status, failure.text);
    }
    if (options.verbose) {
        const double ms = std::chrono::duration<double, std::milli>(waited).count();
        std::cerr << "<- " << app::DoubleText(std::round(ms * 10) / 10)
                  << " ms later: " << response.outline << '\n';
    }
    return Show(TakeAnswer(response.record), options, *target, command_name);
}

}  // namespace kelpctl
