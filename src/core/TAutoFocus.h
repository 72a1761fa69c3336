// The place where a focus mirror would be focused by itself. No instrument of this library has an automatic focus, so
// the operations do nothing; the focus mirrors of both kinds of instruments make the calls all the same.
#pragma once

class TAutoFocus {
 public:
  /// True when the mirror was focused: never.
  bool DoAutoFocus() { return false; }
  /// True when a focusing was ended: never.
  bool CancelAutoFocus() { return false; }
};
