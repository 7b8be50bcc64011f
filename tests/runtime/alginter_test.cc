// Wrappers over a link within the process: the test is the host on the one end, the wrappers run on the other.

#include "alginter.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

// ---- wrappers as they are generated

extern "C" void AL_scaled();
void AL_scaled() {
  get_double(x);
  get_int(n);
  get_lumenNdouble(v);
  get_lumenNNint(m);
  lmif_return(x * n * v + doubleN(m(1, All)));
}

extern "C" void AL_several();
void AL_several() {
  get_complex(z);
  get_string(s);
  lm_complex zc_O1;
  RWCString zc_O2;
  zc_O1 = z * z;
  zc_O2 = XStringReverse(s);
  ALPutFunction(stdlink, "List", 2);
  lmif_return(zc_O1);
  lmif_return(zc_O2);
}

extern "C" void AL_product();
void AL_product() {
  get_lumenNNcomplex(z);
  get_lumenNNNNdouble(t);
  get_Nstring(names);
  if (names.size() != 2 || names[1] != "b") throw lumen_error("wrong names");
  lmif_return(lm_complexNN(z * t(1, 1, 1, 2)));
}

extern "C" void AL_nothing();
void AL_nothing() { lmif_return(); }

namespace {

const AL_IF_function kFunctions[] = {{"scaled[x_Real]", "{x, n,v,m}", AL_scaled},
                                     {"several[z_Complex]", "{ z,s}", AL_several},
                                     {"product[z_]", "{z, t, names}", AL_product},
                                     {"nothing[]", "{ }", AL_nothing},
                                     {"EndPackage[]", nullptr, nullptr}};

// The host's end. What it reads is shown as text: heads with arguments in brackets.
class Alginter : public testing::Test {
 protected:
  ALEnvironment env_ = ALInitialize(nullptr);
  ALINK host_ = nullptr;
  std::thread program_;
  bool served_ = false;

  void SetUp() override {
    int error = 0;
    host_ = ALOpenString(env_, "-linkmode listen -linkname alginter -linkprotocol IntraProcess", &error);
    ASSERT_NE(host_, nullptr) << ALErrorString(env_, error);
    program_ = std::thread([this] {
      int connect_error = 0;
      const ALINK link =
          ALOpenString(env_, "-linkmode connect -linkname alginter -linkprotocol IntraProcess", &connect_error);
      served_ = link && ALConnect(link) && AL_IF_serve(link, kFunctions, 5);
      if (link) ALClose(link);
    });
    ASSERT_EQ(ALConnect(host_), 1);
    std::string announced;
    for (std::string text = read(); text != "End" && text != "?"; text = read()) announced += text + ";";
    EXPECT_EQ(announced.substr(0, 64), "DefineExternal[scaled[x_Real],{x, n,v,m},0];DefineExternal[sever");
    EXPECT_EQ(announced.substr(announced.size() - 34), "nal[nothing[],{ },3];EndPackage[];");
  }
  void TearDown() override {
    ALClose(host_);
    program_.join();
    EXPECT_TRUE(served_);
    ALEnd(env_);
  }

  std::string read() {
    const char* text;
    int n;
    double x;
    std::string result = "?";
    switch (ALGetType(host_)) {
      case ALSymbolToken:
        if (!ALGetSymbol(host_, &text)) return result;
        result = text;
        ALReleaseSymbol(host_, text);
        return result;
      case ALStringToken:
        if (!ALGetString(host_, &text)) return result;
        result = text;
        ALReleaseString(host_, text);
        return result;
      case ALIntegerToken:
      case ALRealToken: return ALGetReal(host_, &x) ? show(x) : result;
      case ALFunctionToken: {
        if (!ALGetFunction(host_, &text, &n)) return result;
        result = std::string(text) + "[";
        ALReleaseSymbol(host_, text);
        for (int i = 0; i < n; i++) result += (i ? "," : "") + read();
        return result + "]";
      }
      default: return result;
    }
  }
  static std::string show(double x) {
    std::ostringstream out;
    out << x;
    return out.str();
  }

  void call(int number, int arguments) {
    ALPutFunction(host_, "CallPacket", 2);
    ALPutInteger(host_, number);
    ALPutFunction(host_, "List", arguments);
  }
  std::string answer() {
    ALEndPacket(host_);
    ALFlush(host_);
    const std::string text = read();
    ALNewPacket(host_);
    return text;
  }
  void put_matrix(std::initializer_list<std::initializer_list<int>> rows) {
    ALPutFunction(host_, "List", static_cast<int>(rows.size()));
    for (const auto& row : rows) {
      ALPutFunction(host_, "List", static_cast<int>(row.size()));
      for (const int i : row) ALPutInteger(host_, i);
    }
  }
};

TEST_F(Alginter, ValuesGoBothWays) {
  const double v[] = {1, 2};
  call(0, 4);
  ALPutReal(host_, 0.5);
  ALPutInteger(host_, 3);
  ALPutReal64List(host_, v, 2);
  put_matrix({{10, 20}, {30, 40}});
  EXPECT_EQ(answer(), "List[11.5,23]");

  call(1, 2);
  ALPutFunction(host_, "Complex", 2);
  ALPutReal(host_, 1);
  ALPutInteger(host_, 2);
  ALPutString(host_, "abc");
  EXPECT_EQ(answer(), "List[Complex[-3,4],cba]");

  call(2, 3);
  put_matrix({{1, 2, 3}});
  ALPutFunction(host_, "List", 1);
  ALPutFunction(host_, "List", 1);
  put_matrix({{5, 7}});
  ALPutFunction(host_, "List", 2);
  ALPutString(host_, "a");
  ALPutString(host_, "b");
  EXPECT_EQ(answer(), "List[List[Complex[7,0],Complex[14,0],Complex[21,0]]]");

  call(3, 0);
  EXPECT_EQ(answer(), "Null");
}

// After each failure the next call works.
TEST_F(Alginter, FailedCallsAreAnswered) {
  testing::internal::CaptureStderr();
  for (const int number : {9, 4, -1, 0}) {  // 4 is no function, and 0 wants arguments
    call(number, 0);
    EXPECT_EQ(answer(), "$Failed");
  }
  call(0, 4);
  ALPutReal(host_, 0.5);
  for (const char* wrong : {"three", "", ""}) ALPutString(host_, wrong);
  EXPECT_EQ(answer(), "$Failed");
  for (const bool ragged : {true, false}) {
    const double v[] = {1, 2};
    call(0, 4);
    ALPutReal(host_, 0.5);
    ALPutInteger(host_, 3);
    ALPutReal64List(host_, v, 2);
    if (ragged)
      put_matrix({{10, 20}, {30}});
    else
      put_matrix({{10, 20, 30}});
    EXPECT_EQ(answer(), "$Failed");
  }
  call(3, 0);
  EXPECT_EQ(answer(), "Null");
  const std::string errors = testing::internal::GetCapturedStderr();
  for (const char* expected :
       {"scaled[x_Real]: argument n from the link: an integer is wanted",
        "argument m from the link: an array whose parts are alike (2 and 1 elements at level 2) is wanted",
        "scaled[x_Real]: Plus: the shapes {2} and {3} do not fit"})
    EXPECT_NE(errors.find(expected), std::string::npos) << errors;
}

}  // namespace
