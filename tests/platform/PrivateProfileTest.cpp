#include "platform/PrivateProfile.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/TemporaryDirectory.h"

namespace {

class PrivateProfile : public testing::Test {
 protected:
  void Content(const std::string& content) { mFile = mDirectory.Write("spectrograph.ini", content); }

  /// The whole buffer after a call whose default is "-", where that fits; mResult is its answer.
  std::string Call(const char* section, const char* key, unsigned int size) {
    // On the heap with the exact size: the address sanitizer sees a byte too many.
    std::vector<char> buffer(size, '#');
    mResult = GetPrivateProfileString(section, key, size > 2 ? "-" : "", buffer.data(), size, mFile.c_str());
    return {buffer.begin(), buffer.end()};
  }

  TemporaryDirectory mDirectory;
  std::string mFile;
  unsigned int mResult = 0;
};

TEST_F(PrivateProfile, ValuesAreFoundByTheOldRules) {
  struct {
    const char *content, *section, *key, *value;
  } const cases[] = {
      // Blanks, quotes and comments.
      {"; [a] in a comment\r\nX=1\n", "a", "X", "-"},
      {"[ Wa ve ]\r\n  MAX STEPS = 48 00 ; note\n", "wave", "maxsteps", "4800"},
      {"[a]\nDATE=\"02/02/2002\"\n", "A", "date", "02/02/2002"},
      {"[a]\nX=it's\r\n", "a", "X", "its"},
      // The first section and the first key; a section ends at the next header.
      {"[a]\nX=1\nX=2\n[b]\nY=3\n", "a", "X", "1"},
      {"[a]\nX=1\n[b]\n[a]\nZ=4\n", "a", "Z", "-"},
      // What follows on the header's line counts.
      {"[a] ; comment\n;Y=1\nY=2\n", "a", "Y", "2"},
      {"[a] rest\n=6\n", "a", "rest\n", "6"},
      // A line without "=" runs into the next key, even through a header.
      {"[a]\njunk\nX=1\n", "a", "junk\nX", "1"},
      {"[b]\njunk\n[c]\nZ=3\n", "b", "junk\n[c]\nZ", "3"},
      // A value needs a line end or a comment behind it. A carriage return is one, but not for the search.
      {"[a]\nX=1", "a", "X", "-"},
      {"[a]\nX=1;", "a", "X", "1"},
      {"[a]\rX=1\rY=2\r", "a", "X", "1"},
      {"[a]\rX=1\rY=2\r", "a", "Y", "-"},
  };
  for (const auto& c : cases) {
    Content(c.content);
    EXPECT_STREQ(c.value, Call(c.section, c.key, 300).c_str()) << c.content << "key " << c.key;
  }
}

TEST_F(PrivateProfile, TextsAreCutAt255CharactersAndAtTheBuffer) {
  const std::string name(255, 'k');
  Content("[" + name + "xyz]\n" + name + "abc=" + std::string(300, 'v') + "\nX=123456789\n");
  EXPECT_STREQ(std::string(255, 'v').c_str(), Call(name.c_str(), name.c_str(), 300).c_str());
  EXPECT_STREQ("-", Call((name + "xyz").c_str(), name.c_str(), 300).c_str());
  EXPECT_EQ(std::string("vvvvvvvvv\0", 10), Call(name.c_str(), name.c_str(), 10));
  EXPECT_EQ(9U, mResult);
  EXPECT_EQ(std::string("123456789\0", 10), Call(name.c_str(), "X", 10)) << "an exact fit";
}

TEST_F(PrivateProfile, ListsEndInTwoZerosAlsoWhenTheyAreCut) {
  const std::string file = "[one]\nA=1\nlonger=2;x\n[ t w o ]\n[]\nB=3";
  struct {
    std::string content;
    const char* section;
    std::string buffer;
    unsigned int result;
  } const cases[] = {
      {file, nullptr, {"one\0two\0\0\0#", 11}, 8},
      {file, "ONE", {"A\0longer\0\0#", 11}, 8},
      {file, "", {"B\0\0", 3}, 1},                    // Names need no value.
      {"A=1\n", nullptr, {"\0###", 4}, 0xFFFFFFFFU},  // A list of nothing.
      {"[ab][cd]", nullptr, {"\0\0", 2}, 0},
      {"[ab][cd]", nullptr, {"ab\0c\0\0", 6}, 4},
      {"[ab][cd]", nullptr, {"ab\0cd\0\0", 7}, 5},  // An exact fit.
      {"[][][][][]", nullptr, {"\0\0\0", 3}, 1},    // Names without characters take room too.
  };
  for (const auto& c : cases) {
    Content(c.content);
    EXPECT_EQ(c.buffer, Call(c.section, nullptr, static_cast<unsigned int>(c.buffer.size()))) << c.content;
    EXPECT_EQ(c.result, mResult);
  }
}

TEST_F(PrivateProfile, NumbersAreFoundInTheirBase) {
  Content("[n]\nHEX=0x10\nOCT=010\nDEC=-12\nBIG=99999999999999999999\nTEXT=abc\nMIXED= 1 2 nm\nNIL=\n");
  EXPECT_EQ(0, WritePrivateProfileString("n", "HEX", "1", mFile.c_str())) << "writes nothing";
  const std::pair<const char*, unsigned int> cases[] = {
      {"hex", 16}, {"oct", 8},    {"dec", -12U}, {"big", static_cast<unsigned int>(LONG_MAX)},
      {"text", 0}, {"mixed", 12}, {"nil", 0},    {"absent", 7}};
  for (const auto& [key, value] : cases) {
    EXPECT_EQ(value, GetPrivateProfileInt("n", key, 7, mFile.c_str())) << key;
  }
}

TEST_F(PrivateProfile, UnusableArgumentsLeaveTheBufferAlone) {
  Content("[a]\nX=1\n");
  std::string buffer = "########";
  EXPECT_EQ(0U, GetPrivateProfileString("a", "X", nullptr, buffer.data(), 8, mFile.c_str()));
  EXPECT_EQ(0U, GetPrivateProfileString("a", "X", "", buffer.data(), 1, mFile.c_str()));
  EXPECT_EQ("########", buffer);
  EXPECT_EQ(0U, GetPrivateProfileString("a", "X", "", nullptr, 8, mFile.c_str()));
}

TEST_F(PrivateProfile, UnreadableFilesGiveTheWholeDefault) {
  for (const std::string& file : {std::string("/absent"), mDirectory.Path().string(), std::string(5'000, 'p')}) {
    std::string buffer = "########";
    EXPECT_EQ(0U, GetPrivateProfileString("a", "X", "default", buffer.data(), 3, file.c_str()));
    EXPECT_STREQ("default", buffer.c_str()) << "without regard to the size given";
  }
}

TEST_F(PrivateProfile, NoContentWritesBeyondTheBuffer) {
  std::mt19937 random(20021);  // The same files each time.
  const std::string alphabet = std::string("[[]]==;;\n\r\n \"'ab") + '\0' + '\xFF';
  for (int file = 0; file < 400; ++file) {
    std::string content(random() % 120, '\0');
    for (char& character : content) {
      character = alphabet[random() % alphabet.size()];
    }
    Content(content);
    for (const unsigned int size : {2U, 3U, 5U, 12U, 300U}) {
      Call(nullptr, nullptr, size);
      EXPECT_NE(std::string::npos, Call("a", nullptr, size).find('\0'));
      EXPECT_NE(std::string::npos, Call("a", "b", size).find('\0'));
    }
    GetPrivateProfileInt("a", "b", 7, mFile.c_str());
  }
}

}  // namespace
