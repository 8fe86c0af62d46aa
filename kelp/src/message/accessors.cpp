// What can be read from a message, and set in it, by functions.

#include <cstring>

#include "message/block.h"
#include "message/current.h"
#include "message/trailer.h"

using kelp::message::BlockOf;
using kelp::message::MsgBlock;

unsigned char* KelpMsgBody(CmdMSG* msg) noexcept {
    return BlockOf(msg)->octets() + KELP_MSG_HEADER;
}

const unsigned char* KelpMsgBody(const CmdMSG* msg) noexcept {
    return reinterpret_cast<const unsigned char*>(msg) + KELP_MSG_HEADER;
}

std::size_t KelpMsgGetBodyLength(const CmdMSG* msg) noexcept {
    return msg == nullptr || msg->bodyLength < 2 ? 0 : msg->bodyLength - 2;
}

void KelpMsgSetSn(CmdMSG* msg, std::uint32_t serial) noexcept {
    if (msg != nullptr) {
        msg->serial = serial;
    }
}

std::uint32_t KelpMsgGetSn(const CmdMSG* msg) noexcept {
    return msg == nullptr ? 0 : msg->serial;
}

std::uint32_t KelpMsgGetErrorCode(const CmdMSG* msg) noexcept {
    return msg == nullptr ? KELP_MSG_NULL : msg->errorCode;
}

bool KelpMsgSetToken(CmdMSG*& msg, std::string_view token) noexcept {
    if (msg == nullptr || BlockOf(msg)->permanent || token.size() > KELP_MSG_MAX_TOKEN ||
        token.find('\0') != std::string_view::npos) {
        return false;
    }
    const MsgBlock* old = BlockOf(msg);
    const std::size_t body_end = KELP_MSG_HEADER + old->body_capacity;
    const std::size_t trailer = token.empty() ? 0 : kelp::message::TrailerOctets(token.size());
    MsgBlock* block = kelp::message::AllocBlock(body_end + trailer);
    if (block == nullptr) {
        return false;
    }
    block->body_capacity = old->body_capacity;
    block->route = old->route;
    block->origin = old->origin;
    std::memcpy(block->octets(), msg, body_end);
    if (trailer != 0) {
        block->trailer_at = static_cast<std::uint32_t>(body_end);
        block->trailer_octets = static_cast<std::uint32_t>(trailer);
        block->token_octets = static_cast<std::uint32_t>(token.size());
        block->token_at = static_cast<std::uint32_t>(
            body_end + kelp::message::WriteTrailer(block->octets() + body_end, token));
    }
    BlockOf(msg)->origin = nullptr;  // it went to the new block
    KelpMsgFree(msg);
    msg = block->message();
    return true;
}

unsigned int KelpMsgGetToken(std::string& token, CmdMSG* msg) {
    token.clear();
    const CmdMSG* asked = msg != nullptr ? msg : kelp::message::CurrentMessage();
    if (asked == nullptr) {
        return KELP_MSG_NULL;
    }
    const MsgBlock* block = BlockOf(asked);
    if (block->token_octets == 0) {
        return 0;
    }
    token.assign(reinterpret_cast<const char*>(asked) + block->token_at, block->token_octets);
    return 1;
}

std::string KelpMsgGetSIP(CmdMSG* msg) {
    const CmdMSG* asked = msg != nullptr ? msg : kelp::message::CurrentMessage();
    // Whatever the bus received came from a process of this machine.
    const bool received = asked != nullptr && BlockOf(asked)->received;
    return received ? "127.0.0.1" : "";
}

TECmdMsg::TECmdMsg() = default;

bool TECmdMsg::FromCmdMsg(const CmdMSG* msg) {
    *this = TECmdMsg();
    if (msg == nullptr) {
        return false;
    }
    version = msg->version;
    clientAddress = msg->clientAddress;
    cmdCode = msg->cmdCode;
    serial = msg->serial;
    errorCode = msg->errorCode;
    flags = msg->flags;
    srcProcId = msg->srcProcId;
    srcProcHandle = msg->srcProcHandle;
    srcTaskId = msg->srcTaskId;
    srcTaskMgr = msg->srcTaskMgr;
    auto* asked = const_cast<CmdMSG*>(msg);  // the accessors do not write
    KelpMsgGetToken(token, asked);
    sourceAddress = KelpMsgGetSIP(asked);
    body.assign(reinterpret_cast<const char*>(KelpMsgBody(msg)), KelpMsgGetBodyLength(msg));
    return true;
}
