#include "kelpd/gateway/metrics.h"

#include <algorithm>

namespace kelpd {
namespace {

struct Named {
    Event event;
    const char* sample;
};
constexpr Named kConnections[] = {
    {Event::kAccepted, "accepted"},
    {Event::kBusy, "busy"},
    {Event::kDropped, "dropped"},
    {Event::kHandshakeFailed, "handshake_failed"},
    {Event::kNoDescriptors, "no_descriptors"},
};
constexpr Named kTimeouts[] = {
    {Event::kHandshakeTimeout, "handshake"}, {Event::kHeaderTimeout, "header"},
    {Event::kBodyTimeout, "body"},           {Event::kWriteTimeout, "write"},
    {Event::kIdleTimeout, "idle"},
};

void Head(std::string& text, const char* name, const char* type, const char* help) {
    text += std::string("# HELP ") + name + ' ' + help + "\n# TYPE " + name + ' ' + type + '\n';
}

void Sample(std::string& text, const std::string& name, std::uint64_t value) {
    text += name + ' ' + std::to_string(value) + '\n';
}

std::string Seconds(std::uint64_t microseconds) {
    std::string fraction = std::to_string(1000000 + microseconds % 1000000);
    fraction[0] = '.';
    return std::to_string(microseconds / 1000000) + fraction;
}

}  // namespace

void Metrics::CountAnswer(int status, std::uint64_t microseconds, std::size_t octets) {
    const auto add = [](Counter& counter, std::uint64_t count) {
        counter.fetch_add(count, std::memory_order_relaxed);
    };
    add(answers_[static_cast<std::size_t>(std::clamp(status / 100, 0, 5))], 1);
    const auto bound = std::lower_bound(kBounds.begin(), kBounds.end(), microseconds);
    add(durations_[static_cast<std::size_t>(bound - kBounds.begin())], 1);
    add(microseconds_, microseconds);
    add(octets_, octets);
}

std::string Metrics::Render(std::size_t open) const {
    std::string text;
    Head(text, "kelpd_connections_open", "gauge", "Connections of the gateway, now.");
    Sample(text, "kelpd_connections_open", open);
    Head(text, "kelpd_connections_total", "counter", "Connections, by what became of them.");
    for (const Named& named : kConnections) {
        Sample(text, std::string("kelpd_connections_total{event=\"") + named.sample + "\"}",
               Of(named.event));
    }
    Head(text, "kelpd_timeouts_total", "counter", "Connections ended by a deadline.");
    for (const Named& named : kTimeouts) {
        Sample(text, std::string("kelpd_timeouts_total{deadline=\"") + named.sample + "\"}",
               Of(named.event));
    }
    Head(text, "kelpd_malformed_total", "counter", "Requests refused unread.");
    Sample(text, "kelpd_malformed_total", Of(Event::kMalformed));
    Head(text, "kelpd_answers_total", "counter", "Answers, by the class of their status.");
    for (std::size_t digit = 2; digit < answers_.size(); ++digit) {
        Sample(text, "kelpd_answers_total{status=\"" + std::to_string(digit) + "xx\"}",
               answers_[digit].load(std::memory_order_relaxed));
    }
    Head(text, "kelpd_answer_octets_total", "counter", "Octets of answers, before encryption.");
    Sample(text, "kelpd_answer_octets_total", octets_.load(std::memory_order_relaxed));
    Head(text, "kelpd_answer_seconds", "histogram", "From the whole request to the sent answer.");
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < durations_.size(); ++i) {
        sum += durations_[i].load(std::memory_order_relaxed);
        const std::string bound = i < kBounds.size() ? Seconds(kBounds[i]) : "+Inf";
        Sample(text, "kelpd_answer_seconds_bucket{le=\"" + bound + "\"}", sum);
    }
    text +=
        "kelpd_answer_seconds_sum " + Seconds(microseconds_.load(std::memory_order_relaxed)) + '\n';
    Sample(text, "kelpd_answer_seconds_count", sum);
    return text;
}

}  // namespace kelpd
