// kelp/message.h - the command message: its layout, its memory, what can be read from it.
//
// Processes talk in command messages. A message is one contiguous block: a header of 50
// octets, the body, and a trailer that only the bus writes and reads. The layout stands
// in docs/formats/message.md; `CmdMSG` below is the header as it lies in memory, and on
// the wire, which is little-endian.
//
//     CmdMSG* msg = KelpMsgAlloc(body.size());
//     msg->dstProcId = 56;
//     msg->cmdCode = 2167;
//     std::memcpy(KelpMsgBody(msg), body.data(), body.size());
//     if (KelpAppMgr::Instance()->SendMSG(msg) == 0) ...   // the message is gone either way
//
// Who frees: whoever holds a message frees it with KelpMsgFree; every call that sends or
// enqueues one takes it, also when it fails. A message *slot* that a failed receive filled
// (see KelpTask::KelpSynRecvEx, KelpAppMgr::KelpSendSynMsgToMDP) points to a message that
// only carries an error code and lives as long as the process: freeing it does nothing,
// so a caller may free what a slot holds without asking whether the call failed.
//
// Thread rule: thread-compatible; one thread uses one message at a time. The functions
// that take no message are thread-safe. Nothing here throws unless it says so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kelp/export.h"

/// The header of a message. Made by KelpMsgAlloc only: body and trailer follow it.
struct CmdMSG {
    std::uint8_t version;         ///< 0: layout of the header, KELP_MSG_VERSION
    std::uint8_t reserved1[3];    ///< 1: zero
    std::uint32_t clientAddress;  ///< 4: IPv4 address the receiver saw, 0: this machine
    std::uint16_t srcDesk;        ///< 8
    std::uint16_t dstDesk;        ///< 10: 0
    std::uint16_t srcProcHandle;  ///< 12
    std::uint16_t dstProcHandle;  ///< 14: 0: the only or the lowest running instance
    std::uint16_t srcProcId;      ///< 16
    std::uint16_t dstProcId;      ///< 18
    std::uint32_t cmdCode;        ///< 20
    std::uint8_t kind;            ///< 24: KELP_MSG_COMMAND
    std::uint8_t flags;           ///< 25: KELP_MSG_REPLY
    std::uint16_t reserved26;     ///< 26: zero
    std::uint32_t serial;         ///< 28: 0: none; an answer carries its request's
    std::uint32_t errorCode;      ///< 32: of an answer, 0: none
    std::uint16_t reserved36;     ///< 36: zero
    std::uint16_t srcTaskId;      ///< 38: 0: sent outside any task
    std::uint16_t dstTaskId;      ///< 40: 0: create a task for this message
    std::uint16_t reserved42;     ///< 42: zero
    std::uint32_t bodyLength;     ///< 44: octets from offset 48 on: the body's plus 2
    std::uint8_t srcTaskMgr;      ///< 48: 0: sent outside any task
    std::uint8_t dstTaskMgr;      ///< 49: 0: the one the command is registered on

    CmdMSG(const CmdMSG&) = delete;
    CmdMSG& operator=(const CmdMSG&) = delete;

  private:
    CmdMSG() = default;
};

inline constexpr std::size_t KELP_MSG_HEADER = 50;  ///< octets in front of the body
inline constexpr std::uint8_t KELP_MSG_VERSION = 10;
inline constexpr std::uint8_t KELP_MSG_COMMAND = 6;
inline constexpr std::uint8_t KELP_MSG_REPLY = 0x01;  ///< in `flags`: an answer

/// What the platform itself puts into `errorCode` of an answer or into a slot. An answer
/// with one of these has an empty body.
enum KelpMsgError : std::uint32_t {
    KELP_MSG_OK = 0,
    KELP_MSG_REJECTED = 0x42000030,        ///< the pre-work hook dropped the request
    KELP_MSG_TIMEOUT = 0x41016901,         ///< no answer within the time-out
    KELP_MSG_PEER_CLOSED = 0x41016902,     ///< the peer ended while the request waited
    KELP_MSG_SEND_FAILED = 0x41016903,     ///< the system refused to send
    KELP_MSG_NO_PEER = 0x41016904,         ///< no such process is running
    KELP_MSG_QUEUE_FULL = 0x41016905,      ///< the receiving task or task manager is full
    KELP_MSG_PEER_BUSY = 0x41016906,       ///< the peer does not read; its send queue is full
    KELP_MSG_TOO_LONG = 0x41016907,        ///< above the limit of a frame
    KELP_MSG_NO_TASK = 0x41016908,         ///< no such task manager or task there
    KELP_MSG_NO_COMMAND = 0x41016909,      ///< nobody registered the command code
    KELP_MSG_BAD_BODY = 0x4101690A,        ///< the request's body does not decode
    KELP_MSG_HANDLER_FAILED = 0x4101690B,  ///< the handler threw or ended its thread
    KELP_MSG_BAD_ANSWER = 0x4101690C,      ///< no response object, or it does not encode
    KELP_MSG_NO_MEMORY = 0x4101690D,
    KELP_MSG_STOPPED = 0x4101690E,  ///< the process shuts down, or is not initialised
    KELP_MSG_NULL = 0xFFFFFFFF,     ///< asked of a null pointer
};

/// A message with room for `bodyOctets` octets, which are not initialised; the header is
/// zero but for its version, kind and bodyLength. Null when there is no memory or the body is above
/// 1 GiB.
KELP_API CmdMSG* KelpMsgAlloc(std::size_t bodyOctets) noexcept;

/// Frees a message. Null, and what a failed receive left in a slot, are left alone.
KELP_API void KelpMsgFree(CmdMSG* msg) noexcept;

/// An answer to `request`, which stays the caller's: addressed back to its sender, with
/// its serial number and command code, KELP_MSG_REPLY set and room for `bodyOctets`
/// octets. Sending it takes the connection that carried the request. Null when there is
/// no memory or `request` is null.
KELP_API CmdMSG* KelpMsgAllocAnswer(const CmdMSG* request, std::size_t bodyOctets) noexcept;

/// The first octet of the body. REQUIRES: `msg` is not null.
KELP_API unsigned char* KelpMsgBody(CmdMSG* msg) noexcept;
KELP_API const unsigned char* KelpMsgBody(const CmdMSG* msg) noexcept;

/// The body's length in octets: bodyLength - 2; 0 for a null message.
KELP_API std::size_t KelpMsgGetBodyLength(const CmdMSG* msg) noexcept;

/// Sets the serial number. It is not an error if `msg` is null.
KELP_API void KelpMsgSetSn(CmdMSG* msg, std::uint32_t serial) noexcept;
/// The serial number; 0 for a null message.
KELP_API std::uint32_t KelpMsgGetSn(const CmdMSG* msg) noexcept;

/// The error code of an answer or of what a failed receive left in a slot; 0: none.
/// KELP_MSG_NULL for a null message.
KELP_API std::uint32_t KelpMsgGetErrorCode(const CmdMSG* msg) noexcept;

/// Puts a security token into the message's trailer; an empty one takes it out. The body
/// length is not touched. The block may move: `msg` is set to where it is. False, the
/// message unchanged, when there is no memory, `msg` is null, or the token is longer than
/// KELP_MSG_MAX_TOKEN or contains a zero octet.
KELP_API bool KelpMsgSetToken(CmdMSG*& msg, std::string_view token) noexcept;
inline constexpr std::size_t KELP_MSG_MAX_TOKEN = 8192;

/// Reads the message's security token. Without a message it answers for the message that
/// the calling thread is processing: in the pre-work hook, and in a handler and whatever
/// that calls. Result: 1 with the token in `token`; 0 when the message carries none;
/// 0xFFFFFFFF when no message was given and none is being processed. `token` is empty
/// unless the result is 1. A received message never makes this fail: one whose trailer is
/// damaged or doubled is refused before anything looks at it. May throw std::bad_alloc.
KELP_API unsigned int KelpMsgGetToken(std::string& token, CmdMSG* msg);

/// The sender's address as text, as the receiving side saw it and whatever the sender
/// wrote: "127.0.0.1" for a process of this machine. Empty for a message that was not
/// received. Without a message: as KelpMsgGetToken. May throw std::bad_alloc.
KELP_API std::string KelpMsgGetSIP(CmdMSG* msg);

/// Installs a function that sees every request before it is decoded or handed to a task,
/// on the thread that would process it: 1 lets the message through, 0 drops it and its
/// sender, if it waits, is answered KELP_MSG_REJECTED. The function must not free the
/// message. Null removes it. Result: 0. Threads that are already processing a message
/// may still call the function that was there before.
KELP_API int SetPreWorkTaskMsgFunc(int (*preWork)(CmdMSG* msg)) noexcept;

/// Who this process is, to other processes: what KelpAppMgr was initialised with; before
/// that, and in a process that never does it, KELP_PROC_ID, KELP_PROC_HANDLE and
/// KELP_DESK_ID of the environment, 0 where they do not hold a number up to 65535.
KELP_API unsigned int KelpGetProcId() noexcept;
KELP_API unsigned short KelpGetProcHandle() noexcept;
KELP_API unsigned short KelpGetDeskId() noexcept;

/// A message taken apart, for code that keeps it longer than the message lives.
struct KELP_API TECmdMsg {
    std::uint8_t version = 0;
    std::uint32_t clientAddress = 0;  ///< as CmdMSG::clientAddress
    std::uint32_t cmdCode = 0;
    std::uint32_t serial = 0;
    std::uint32_t errorCode = 0;
    std::uint8_t flags = 0;
    std::uint16_t srcProcId = 0;
    std::uint16_t srcProcHandle = 0;
    std::uint16_t srcTaskId = 0;
    std::uint8_t srcTaskMgr = 0;
    std::string token;          ///< empty: none
    std::string sourceAddress;  ///< as KelpMsgGetSIP
    std::string body;

    TECmdMsg();

    /// Copies everything out of `msg`. False, with this object as constructed, when it is
    /// null. May throw std::bad_alloc.
    bool FromCmdMsg(const CmdMSG* msg);
};
