// Looks at every block that the program frees, as it is freed.
//
//     FreedMemory freed(secret);
//     Work();
//     EXPECT_EQ(freed.WithSecret(), 0);     // no block was freed with the secret in it
//     EXPECT_EQ(freed.Wiped(), 1);          // one with as many octets 0xCC as the secret is long
//
// one thread.
#pragma once

#include <string>

class FreedMemory {
  public:
    explicit FreedMemory(const std::string& secret);
    ~FreedMemory();
    FreedMemory(const FreedMemory&) = delete;
    FreedMemory& operator=(const FreedMemory&) = delete;

    int WithSecret() const;
    int Wiped() const;
};
