// Settings are read from one table each: a name, its limits, where it goes.

#include "kelpd/config/config.h"

#include <gmock/gmock.h>

#include "kelpd/init/templates.h"
#include "kelpd/status.h"

namespace kelpd {
namespace {

TEST(Config, NothingSaidMeansTheDefaults) {
    const Config config = ParseConfig("/r", "{}");
    EXPECT_EQ(config.listen, "127.0.0.1");
    EXPECT_EQ(config.port, 18443);
    EXPECT_EQ(config.key_file, "/r/etc/ssl/server.key");
    EXPECT_EQ(config.health_socket, "/r/var/run/kelpd.health.sock");
    EXPECT_EQ(config.limits.header_bytes, 8192U);
    EXPECT_EQ(config.limits.stop, std::chrono::seconds(8));
}

// What a new root says is what nothing said means: the two lists must not drift apart.
TEST(Config, NewRootSpellsTheDefaultsOut) {
    std::string text;
    for (const Template& file : Templates()) {
        if (file.path == "oss/etc/kelp.json") {
            text = Fill(file.text, {{"port", "18443"}});
        }
    }
    const Config written = ParseConfig("/r", text);
    const Config defaults = ParseConfig("/r", "{}");
    EXPECT_EQ(written.port, defaults.port);
    EXPECT_EQ(written.listen, defaults.listen);
    EXPECT_EQ(written.threads, defaults.threads);
    EXPECT_EQ(written.ca_file, defaults.ca_file);
    EXPECT_EQ(written.certificate_file, defaults.certificate_file);
    EXPECT_EQ(written.key_file, defaults.key_file);
    EXPECT_EQ(written.run_folder, defaults.run_folder);
    EXPECT_EQ(written.health_socket, defaults.health_socket);
    EXPECT_EQ(written.log_file, defaults.log_file);
    EXPECT_EQ(written.rest_groups_file, defaults.rest_groups_file);
    EXPECT_TRUE(written.limits == defaults.limits);
}

TEST(Config, ValuesArriveWhereTheyBelong) {
    const Config config = ParseConfig("/r", R"({
        "gateway": {"listen": "::1", "port": 65535, "threads": 3},
        "tls": {"ca": "/elsewhere/ca", "serverKey": "k"},
        "log": {"file": ""},
        "limits": {"connections": 1, "connectionsPerAddress": 2, "headerBytes": 256,
                   "headerCount": 4, "bodyBytes": 0, "handshakeMs": 6, "headerMs": 7,
                   "bodyMs": 8, "writeMs": 9, "idleMs": 10, "stopMs": 9000}})");
    EXPECT_EQ(config.listen, "::1");
    EXPECT_EQ(config.port, 65535);
    EXPECT_EQ(config.threads, 3U);
    EXPECT_EQ(config.ca_file, "/elsewhere/ca");
    EXPECT_EQ(config.key_file, "/r/k");
    EXPECT_EQ(config.log_file, "");
    using std::chrono::milliseconds;
    const Limits expected{1,
                          2,
                          256,
                          4,
                          0,
                          milliseconds(6),
                          milliseconds(7),
                          milliseconds(8),
                          milliseconds(9),
                          milliseconds(10),
                          milliseconds(9000)};
    EXPECT_TRUE(config.limits == expected);
}

TEST(Fill, PutsValuesIn) {
    EXPECT_EQ(Fill("a{{x}}b{{y}}{{x}}", {{"x", "1"}, {"y", ""}}), "a1b1");
    EXPECT_EQ(Fill("{ {x}} {{", {}), "{ {x}} {{");
    EXPECT_THROW(Fill("{{z}}", {{"x", "1"}}), std::out_of_range);
}

}  // namespace
}  // namespace kelpd
