// One opening of a virtual device node: the descriptor that the program holds, and the finished requests that wait to
// be reaped. The descriptor is the write end of a pipe that is kept full except while something can be reaped, which is
// when a device node is writable; without a reader it polls as an error, as a node does whose device is gone.
// Used by the bus and by the interposed system calls, which lock.
#pragma once

#include <linux/usbdevice_fs.h>

#include <deque>

class UsbDeviceNode;

class UsbDeviceFile {
 public:
  /// Throws std::system_error when there is no descriptor left.
  explicit UsbDeviceFile(UsbDeviceNode& node);
  /// Closes the pipe's other end. The descriptor itself belongs to the program, which closes it.
  ~UsbDeviceFile();
  UsbDeviceFile(const UsbDeviceFile&) = delete;
  UsbDeviceFile& operator=(const UsbDeviceFile&) = delete;

  int Descriptor() const { return mDescriptor; }
  /// The node, borrowed from the bus; null once the device is gone.
  UsbDeviceNode* Node() const { return mNode; }
  void Complete(usbdevfs_urb& urb);
  /// The request that finished first, or null.
  usbdevfs_urb* Reap();
  /// The device is gone; what has finished can still be reaped.
  void Disconnect();

 private:
  void SetWritable(bool writable);

  UsbDeviceNode* mNode;
  int mDescriptor = -1;
  int mReader = -1;
  bool mWritable = true;
  std::deque<usbdevfs_urb*> mCompleted;
};
