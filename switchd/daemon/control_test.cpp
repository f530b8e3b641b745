// Requests: what handlers are given, and what never reaches one.
#include "switchd/daemon/control.h"

#include <gtest/gtest.h>

#include <new>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace switchd {
namespace control_test {

using nlohmann::json;

class Requests : public testing::Test {
  protected:
    json asked(const char *request) { return answer(handlers_, json::parse(request)); }

    Arguments given_;
    int calls_ = 0;
    Handlers handlers_{{"add",
                        [this](const Arguments &arguments) {
                            ++calls_;
                            given_ = arguments;
                            return json{{"text", "made"}};
                        }},
                       {"resync", [](const Arguments &) -> json { throw std::runtime_error{"not now."}; }},
                       {"status", [](const Arguments &) -> json { return json(1).at("no object"); }},
                       {"statistics", [](const Arguments &) -> json { throw std::bad_alloc{}; }}};
};

TEST_F(Requests, AreHandledByTheirCommand) {
    EXPECT_EQ(asked(R"({"command": "add", "arguments": ["swp3.100"]})"), json({{"text", "made"}}));
    EXPECT_EQ(given_, Arguments{"swp3.100"});
}

TEST_F(Requests, AreRefusedWithASentence) {
    EXPECT_EQ(asked(R"({"command": "resync"})"), json({{"error", "not now."}}));
    EXPECT_EQ(asked(R"({"command": "remove", "arguments": ["swp3.100"]})"),
              json({{"error", "'remove' is not answered now."}}));
    EXPECT_TRUE(asked(R"({"command": "status"})").contains("error"))
        << "a handler that fails is none that ends the daemon";
}

TEST_F(Requests, ThatNeedTooMuchMemoryAreTheServersMatter) {
    EXPECT_THROW(asked(R"({"command": "statistics"})"), std::bad_alloc);
}

TEST_F(Requests, MayBeAnything) {
    const std::string many = R"({"command": "add", "arguments": [")" + std::string(257, 'x') + "\"]}";
    for (const char *request :
         {"{}", R"({"command": 1})", R"({"command": null})", R"({"command": "adds", "arguments": ["swp3.100"]})",
          R"({"command": "add"})", R"({"command": "add", "arguments": "swp3.100"})",
          R"({"command": "add", "arguments": {}})", R"({"command": "add", "arguments": [1]})",
          R"({"command": "add", "arguments": [["swp3.100"]]})",
          R"({"command": "add", "arguments": ["1", "2", "3", "4", "5", "6", "7", "8", "9"]})", many.c_str()}) {
        const json said = asked(request);
        EXPECT_TRUE(said.contains("error")) << request;
        EXPECT_LT(said.dump().size(), 200U) << request;
    }
    EXPECT_EQ(calls_, 0);
}

}  // namespace control_test
}  // namespace switchd
