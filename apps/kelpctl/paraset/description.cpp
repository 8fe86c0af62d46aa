#include "kelpctl/paraset/description.h"

#include <cstdlib>
#include <system_error>

#include "kelp/settings.h"

namespace kelpctl {
namespace {

constexpr std::size_t kMostLinesNamed = 10;

std::string LinesOf(const FrameUtil::DescReport& report) {
    std::string text;
    for (const auto& line : report.rejected) {
        if (&line == &report.rejected.front() + kMostLinesNamed) {
            return text + ", ... (" + std::to_string(report.rejected.size()) + " lines)";
        }
        text += (text.empty() ? "" : ", ") + ("line " + std::to_string(line.number)) + " (" +
                std::to_string(line.fields) + ")";
    }
    return text;
}

}  // namespace

std::string InstalledDescription() {
    // No thread runs yet. NOLINTNEXTLINE(concurrency-mt-unsafe)
    const char* root = std::getenv("OSS_ROOT");
    if (root == nullptr || *root == '\0') {
        return {};
    }
    return ns_kelpsdk_wrap::GetPackageRelativePath("", "rtsp/DRKFrame") +
           "/drk/frame/conf/MCDB..bms_desc_Asn1ParaDesc.bcp";
}

std::unique_ptr<FrameUtil::CEndeCode> LoadDescription(const std::string& file, std::string& why) {
    FrameUtil::DescReport report;
    auto codec = std::make_unique<FrameUtil::CEndeCode>(file, &report);
    if (file.empty()) {
        return codec;
    }
    if (report.error != 0) {
        why = file + ": " + std::generic_category().message(report.error);
        return nullptr;
    }
    if (!report.rejected.empty()) {
        why = file + ": not six fields: " + LinesOf(report);
        return nullptr;
    }
    return codec;
}

}  // namespace kelpctl
