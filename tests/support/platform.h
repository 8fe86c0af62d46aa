// A process on the platform for one test: initialised in a run directory of its own, with
// one task manager, and destroyed afterwards.
//
//     Platform platform;                                  // process 3001.1, manager 9
//     platform.InTask([&](KelpGnlTask& task) { ... });    // runs on a worker
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>

#include "kelp/asn1.h"
#include "kelp/task.h"
#include "support/temp_folder.h"

// Calls `holds` until it is true or 30 seconds are over.
template <class Condition>
bool Eventually(Condition&& holds) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > until) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

class Platform {
  public:
    static constexpr unsigned char kManager = 9;
    static constexpr unsigned short kProc = 3001;

    explicit Platform(KelpAppOptions options = KelpAppOptions(), int threads = 2) {
        options.procId = kProc;
        options.runDir = m_folder.Path();
        m_initialised = KelpAppMgr::Initialize(options);
        EXPECT_TRUE(m_initialised);
        m_manager = new KelpGnlTaskMgr(KelpAppMgr::Instance(), nullptr, kManager, threads);
        EXPECT_TRUE(KelpAppMgr::Instance()->TMInsertTaskMgr(m_manager, true));
        EXPECT_TRUE(m_manager->Initialize());
    }
    ~Platform() { KelpAppMgr::Destroy(); }
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    const std::string& RunDir() const { return m_folder.Path(); }
    KelpGnlTaskMgr& Manager() { return *m_manager; }

    // Runs `body` in a task of the manager and returns when it has ended.
    void InTask(std::function<void(KelpGnlTask&)> body) {
        static const bool registered = KelpTaskCreator::Instance()->RegisterTask(
            {kManager, kRunCommand, nullptr, nullptr, nullptr, nullptr, &Run});
        ASSERT_TRUE(registered);
        Body() = std::move(body);
        CmdMSG* msg = KelpMsgAlloc(0);
        msg->dstProcId = kProc;
        msg->cmdCode = kRunCommand;
        CmdMSG* reply = nullptr;
        EXPECT_NE(KelpAppMgr::Instance()->KelpSendSynMsgToMDP(msg, reply, 2147483647), 0)
            << std::hex << KelpMsgGetErrorCode(reply);
        KelpMsgFree(reply);
    }

    // A request to this process itself, as sent by a thread outside any task. The code of
    // the answer, or why there is none; `reply`, if given, gets the answer's body.
    static std::uint32_t Call(std::uint32_t command, const std::string& body = "",
                              std::string* reply = nullptr, int seconds = 30) {
        CmdMSG* msg = KelpMsgAlloc(body.size());
        msg->dstProcId = kProc;
        msg->cmdCode = command;
        body.copy(reinterpret_cast<char*>(KelpMsgBody(msg)), body.size());
        CmdMSG* slot = nullptr;
        KelpAppMgr::Instance()->KelpSendSynMsgToMDP(msg, slot, seconds);
        const std::uint32_t code = KelpMsgGetErrorCode(slot);
        if (reply != nullptr) {
            reply->assign(reinterpret_cast<const char*>(KelpMsgBody(slot)),
                          KelpMsgGetBodyLength(slot));
        }
        KelpMsgFree(slot);
        return code;
    }

  private:
    static constexpr std::uint32_t kRunCommand = 0x7E570001;

    static std::function<void(KelpGnlTask&)>& Body() {
        static std::function<void(KelpGnlTask&)> body;
        return body;
    }
    static void Run(AsnType*, AsnType*, KelpGnlTask* task) { Body()(*task); }

    TempFolder m_folder;
    bool m_initialised = false;
    KelpGnlTaskMgr* m_manager = nullptr;
};
