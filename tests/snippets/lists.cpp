#include <cstdio>
#include <string>

#include "frameutil/platform.h"
#include "frameutil/strutil.h"

using namespace FrameUtil;

static void Lists() {
    // [lists]
    StrLinker list('|');
    list << "eth0" << 1500 << "a|b";
    std::printf("%s\n", list());

    StrSpliter items(list(), '|');
    char name[] = "        ";  // room for as many characters as it shows
    std::string label;
    long mtu = 0;
    items >> name >> mtu >> label;
    std::printf("'%s' %ld '%s'\n", name, mtu, label.c_str());
    // [/lists]
}

static void ListInAValue() {
    // [list-in-a-value]
    StrLinker list('|');
    list << "up|down";
    list << "up";
    StrUIDFactory factory;
    factory.Append("ne", 4).Append("states", list());
    std::printf("%s\n", factory.GetStr().c_str());

    StrUIDParser parser;
    StrSpliter states('|');
    if (parser.Parse(factory.GetStr().c_str()) && parser.GetValue(states, "states", 0)) {
        std::string state;
        while (states.HasNext()) {
            states >> state;
            std::printf("%s\n", state.c_str());
        }
    }
    // [/list-in-a-value]
}

static void Helpers() {
    // [helpers]
    for (const std::string& word : Split("up, down,,up", ", ", EmptyItems::kDrop)) {
        std::printf("[%s]", word.c_str());
    }
    const std::string text = Trim("  O'Brien\n");
    std::printf(" '%s'\n", EscapeQuotation(text).c_str());

    std::string why;
    if (GetPubKeyFromOPenSSH("ssh-ed25519 AAAA", &why).empty()) {
        std::printf("%s\n", why.c_str());
    }
    std::string password = "secret";
    ClearPasswd(password);  // before its memory goes to somebody else
    // [/helpers]
}

static void Blocks() {
    // [blocks]
    void* const first = Malloc(20);
    void* const second = Malloc(18);  // the same pool
    const BlockPoolState state = GetBlockPoolState(20);
    std::printf("%ld of %lu blocks in %lu chunk\n", state.in_use, state.blocks, state.chunks);
    Free(first, 20);
    Free(second, 18);
    std::printf("%lu chunks\n", GetBlockPoolState(20).chunks);
    // [/blocks]
}

int main() {
    Lists();
    ListInAValue();
    Helpers();
    Blocks();
}
