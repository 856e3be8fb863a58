#include "qordex/catalogue.h"

#include <gtest/gtest.h>

#include <string>

#include "qordex/qordex.h"
#include "qordex/qordeximpl.h"

namespace {

TEST(Catalogue, HoldsACopyOfEachCommandUnderEachOfItsNames) {
  Catalogue catalogue = BuiltinCatalogue();
  EXPECT_EQ(catalogue.size(), 6U);
  catalogue.at("moduleName: sarvik,cmdName: i").args.emplace_back("3");
  EXPECT_TRUE(catalogue.at("moduleName: sarvik,cmdName: inject").args.empty());
  EXPECT_EQ(CatalogueKey(std::string(600, 'm'), ""), "moduleName: " + std::string(499, 'm'));
  RegisterCommand(CmdOption(), catalogue);
  EXPECT_EQ(catalogue.size(), 6U) << "an entry without a module is left out";
}

TEST(ArgumentParser, ReadsWordsThatAreNotThereAsEmpty) {
  char word[] = "--help";
  char* argv[] = {word, word, nullptr};
  QORDEXMessageString record = {};
  QORDEXImpl client;
  testing::internal::CaptureStdout();
  EXPECT_EQ(client.ParseArguments(0, argv, record), kStatusUnknownCommand);
  EXPECT_EQ(client.ParseArguments(1, argv, record), kStatusNoCommandName);
  EXPECT_EQ(client.ParseArguments(2, argv, record), kStatusNoCommandName);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "No such module or command\nCommand name is error\nCommand name is error\n");
}

}  // namespace
