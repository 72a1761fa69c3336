// A camera SDK whose "Initialize" throws a type of its own, which goes when the library is unloaded.
#include <string>

namespace {

class Problem {
 public:
  explicit Problem(const char* text) : mText(text) {}
  virtual ~Problem() = default;
  Problem(const Problem&) = default;
  Problem& operator=(const Problem&) = default;

 private:
  std::string mText;
};

}  // namespace

#pragma GCC visibility push(default)

extern "C" {

unsigned int Initialize(char* /*directory*/) {
  throw Problem("a text that is too long to be kept in the string itself");
}
unsigned int ShutDown() {
  throw Problem("never initialised");
}
unsigned int I2CWrite(unsigned char /*address*/, unsigned char /*reg*/, unsigned char /*data*/) {
  return 0;
}
unsigned int I2CRead(unsigned char /*address*/, unsigned char /*reg*/, unsigned char* /*data*/) {
  return 0;
}
unsigned int I2CBurstWrite(unsigned char /*address*/, long /*count*/, unsigned char* /*data*/) {
  return 0;
}
unsigned int I2CBurstRead(unsigned char /*address*/, long /*count*/, unsigned char* /*data*/) {
  return 0;
}
unsigned int GetDetector(int* /*xPixels*/, int* /*yPixels*/) {
  return 0;
}
unsigned int GetPixelSize(float* /*width*/, float* /*height*/) {
  return 0;
}
}
