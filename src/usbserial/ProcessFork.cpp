#include "usbserial/ProcessFork.h"

#include <pthread.h>

namespace corvane {
namespace {

std::mutex gMutex;
void (*gBegin)() = nullptr;

void Prepare() {
  gMutex.lock();
}

void GoOnInParent() {
  gMutex.unlock();
}

void BeginInChild() {
  gMutex.unlock();
  gBegin();
}

}  // namespace

std::mutex& ForkMutex() {
  return gMutex;
}

void AtForkInChild(void (*begin)()) {
  gBegin = begin;
  pthread_atfork(Prepare, GoOnInParent, BeginInChild);
}

}  // namespace corvane
