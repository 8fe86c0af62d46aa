// Keeps what a test provokes by the thousand off standard error and out of the log's file;
// sinks get it all the same.
//
//     const QuietLog quiet;
//
// Thread rule: one at a time in a process.
#pragma once

#include "kelp/log.h"

class QuietLog {
  public:
    QuietLog() { kelp::log::SetLevel(kelp::log::Level::kOff); }
    ~QuietLog() { kelp::log::SetLevel(m_former); }
    QuietLog(const QuietLog&) = delete;
    QuietLog& operator=(const QuietLog&) = delete;

  private:
    const kelp::log::Level m_former = kelp::log::GetLevel();
};
