#include "message/block.h"

#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>

#include "message/current.h"

static_assert(std::endian::native == std::endian::little, "messages lie in memory as on the wire");
static_assert(offsetof(CmdMSG, srcTaskMgr) == kelp::message::kLengthOrigin);
static_assert(offsetof(CmdMSG, dstTaskMgr) + 1 == KELP_MSG_HEADER);

namespace kelp::message {
namespace {

constexpr std::uint32_t kSlotCodes[] = {
    KELP_MSG_REJECTED,   KELP_MSG_TIMEOUT,    KELP_MSG_PEER_CLOSED, KELP_MSG_SEND_FAILED,
    KELP_MSG_NO_PEER,    KELP_MSG_QUEUE_FULL, KELP_MSG_PEER_BUSY,   KELP_MSG_TOO_LONG,
    KELP_MSG_NO_TASK,    KELP_MSG_NO_COMMAND, KELP_MSG_BAD_BODY,    KELP_MSG_HANDLER_FAILED,
    KELP_MSG_BAD_ANSWER, KELP_MSG_NO_MEMORY,  KELP_MSG_STOPPED,
};
constexpr std::size_t kSlots = std::size(kSlotCodes);

struct Slot {
    alignas(MsgBlock) unsigned char memory[sizeof(MsgBlock) + sizeof(CmdMSG)];
};

void InitHeader(CmdMSG* msg, std::size_t body_octets) {
    std::memset(static_cast<void*>(msg), 0, KELP_MSG_HEADER);
    msg->version = KELP_MSG_VERSION;
    msg->kind = KELP_MSG_COMMAND;
    msg->bodyLength = static_cast<std::uint32_t>(body_octets + 2);
}

std::array<Slot, kSlots>& MakeSlots() {
    static std::array<Slot, kSlots> slots{};
    for (std::size_t i = 0; i < kSlots; ++i) {
        auto* block = reinterpret_cast<MsgBlock*>(slots[i].memory);
        block->capacity = KELP_MSG_HEADER;
        block->permanent = true;
        InitHeader(block->message(), 0);
        block->message()->flags = KELP_MSG_REPLY;
        block->message()->errorCode = kSlotCodes[i];
    }
    return slots;
}

}  // namespace

MsgBlock* AllocBlock(std::size_t octets) noexcept {
    // The header's structure is two octets larger than a message without a body.
    const std::size_t room = octets < sizeof(CmdMSG) ? sizeof(CmdMSG) : octets;
    auto* block = static_cast<MsgBlock*>(std::malloc(sizeof(MsgBlock) + room));
    if (block != nullptr) {
        std::memset(static_cast<void*>(block), 0, sizeof(MsgBlock));
        block->capacity = static_cast<std::uint32_t>(octets);
        block->body_capacity = static_cast<std::uint32_t>(octets - KELP_MSG_HEADER);
    }
    return block;
}

std::size_t MessageOctets(const CmdMSG* msg) noexcept {
    return kLengthOrigin + msg->bodyLength + BlockOf(msg)->trailer_octets;
}

bool Seal(CmdMSG* msg) noexcept {
    MsgBlock* block = BlockOf(msg);
    if (msg->bodyLength < 2 || msg->bodyLength - 2 > block->body_capacity || block->permanent) {
        return false;
    }
    const std::size_t body_end = kLengthOrigin + msg->bodyLength;
    if (block->trailer_octets != 0 && block->trailer_at != body_end) {
        std::memmove(block->octets() + body_end, block->octets() + block->trailer_at,
                     block->trailer_octets);
        block->token_at -= static_cast<std::uint32_t>(block->trailer_at - body_end);
        block->trailer_at = static_cast<std::uint32_t>(body_end);
    }
    block->wire_length = static_cast<std::uint32_t>(body_end + block->trailer_octets);
    return true;
}

CmdMSG* ErrorSlot(std::uint32_t code) noexcept {
    static std::array<Slot, kSlots>& slots = MakeSlots();
    std::size_t found = 3;  // KELP_MSG_SEND_FAILED, for a code that has no slot
    for (std::size_t i = 0; i < kSlots; ++i) {
        if (kSlotCodes[i] == code) {
            found = i;
        }
    }
    return reinterpret_cast<MsgBlock*>(slots[found].memory)->message();
}

}  // namespace kelp::message

using kelp::message::BlockOf;
using kelp::message::MsgBlock;

CmdMSG* KelpMsgAlloc(std::size_t bodyOctets) noexcept {
    if (bodyOctets > kelp::message::kMaxBody) {
        return nullptr;
    }
    MsgBlock* block = kelp::message::AllocBlock(KELP_MSG_HEADER + bodyOctets);
    if (block == nullptr) {
        return nullptr;
    }
    kelp::message::InitHeader(block->message(), bodyOctets);
    return block->message();
}

void KelpMsgFree(CmdMSG* msg) noexcept {
    if (msg == nullptr || BlockOf(msg)->permanent) {
        return;
    }
    kelp::message::ForgetCurrent(msg);
    if (BlockOf(msg)->origin != nullptr) {
        BlockOf(msg)->origin->Release();
    }
    std::free(BlockOf(msg));
}

CmdMSG* KelpMsgAllocAnswer(const CmdMSG* request, std::size_t bodyOctets) noexcept {
    CmdMSG* answer = request == nullptr ? nullptr : KelpMsgAlloc(bodyOctets);
    if (answer == nullptr) {
        return nullptr;
    }
    answer->flags = KELP_MSG_REPLY;
    answer->serial = request->serial;
    answer->cmdCode = request->cmdCode;
    answer->srcDesk = request->dstDesk;
    answer->dstDesk = request->srcDesk;
    answer->srcProcId = request->dstProcId;
    answer->dstProcId = request->srcProcId;
    answer->srcProcHandle = KelpGetProcHandle();
    answer->dstProcHandle = request->srcProcHandle;
    answer->srcTaskId = request->dstTaskId;
    answer->dstTaskId = request->srcTaskId;
    answer->srcTaskMgr = request->dstTaskMgr;
    answer->dstTaskMgr = request->srcTaskMgr;
    const MsgBlock* from = BlockOf(request);
    MsgBlock* to = BlockOf(answer);
    to->route = from->route;
    if (from->origin != nullptr) {
        from->origin->AddRef();
        to->origin = from->origin;
    }
    return answer;
}
