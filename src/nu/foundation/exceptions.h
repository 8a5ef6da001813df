#ifndef NU_FOUNDATION_EXCEPTIONS_H
#define NU_FOUNDATION_EXCEPTIONS_H

#include "nu/export.h"
#include "nu/foundation/causes.h"

// The root of the exceptions that the library throws by value; catch by reference. An exception owns no memory, so
// copying it cannot fail. The fields are read directly; a text longer than its field is truncated. A cause of 0, or a
// null text for a memory exception, builds an empty exception; a null text leaves its field empty. The causes are named
// in nu/foundation/causes.h.
class NU_EXPORT CNuException {
 public:
  CNuException(const CNuException&) = default;
  CNuException& operator=(const CNuException&) = default;
  virtual ~CNuException();

  // The cause as it was given to the constructor; 301 for a memory exception; 0 for an empty one.
  virtual int GetCause() const = 0;

  // A process-wide flag for the host's own handling of exceptions: once set it stays set. The library never reads it.
  static void SetAssert();
  static int IsAssertEnabled();
  static int m_nAssert;

  int m_nCause;           // 1-99 construction, 101-199 operation, 201-299 best fit, 301 memory, 0 none
  int m_nLower = 0;       // lower end of a violated integer range; best fit: the size
  int m_nUpper = 0;       // upper end of that range, for an index the container's size minus 1
  double m_dLower = 0.0;  // operation: lower end of a violated real range, or the offending value
  double m_dUpper = 0.0;  // operation: upper end of that range
  char m_szWhat[100] = {};
  char m_szWhere[50] = {};

 protected:
  explicit CNuException(int cause) : m_nCause(cause) {}

  void SetWhat(const char* text);
  void SetWhere(const char* text);
};

// Invalid arguments of a constructor: where names the class, what the parameter.
class NU_EXPORT CNuConstructionException : public CNuException {
 public:
  // An empty exception, and one with its fields; `lower` and `upper` are the ends of a violated integer range, else 0.
  CNuConstructionException() : CNuException(0) {}
  CNuConstructionException(int cause, const char* where, const char* what, int lower, int upper);
  CNuConstructionException(const CNuConstructionException&) = default;
  CNuConstructionException& operator=(const CNuConstructionException&) = default;
  ~CNuConstructionException() override;

  int GetCause() const override;
};

// Invalid operations and their arguments: what names the kind of operation, where the operation.
class NU_EXPORT CNuOperationException : public CNuException {
 public:
  // An empty exception, and one with its fields; the ends of violated ranges, as int and as double, else 0.
  CNuOperationException() : CNuException(0) {}
  CNuOperationException(int cause, const char* what, const char* where, int lower, int upper, double dlower,
                        double dupper);
  CNuOperationException(const CNuOperationException&) = default;
  CNuOperationException& operator=(const CNuOperationException&) = default;
  ~CNuOperationException() override;

  int GetCause() const override;
  // The lower end of a violated real range, or the offending value.
  double GetValue() const { return m_dLower; }
};

// A fit that cannot be carried out: where names the feature's class, size the number of points that it needs.
class NU_EXPORT CNuBestfitException : public CNuException {
 public:
  // An empty exception, and one with its fields.
  CNuBestfitException() : CNuException(0) {}
  CNuBestfitException(int cause, const char* where, int size);
  CNuBestfitException(const CNuBestfitException&) = default;
  CNuBestfitException& operator=(const CNuBestfitException&) = default;
  ~CNuBestfitException() override;

  int GetCause() const override;
  // The number of points that the fit needs, 0 where the cause is another one.
  int GetSize() const { return m_nLower; }
};

// An allocation that failed: where names the operation. Every operation of the library throws this exception when
// memory runs out, never std::bad_alloc; it leaks nothing, and leaves its object as it was. There are three exceptions
// to this: fits of CNuLine, CNuPlane and CNuCircle fail with their cause 11, fits that return their failure return
// NuFitFailure, and readers of files, which throw nothing, return false. What a host's own function throws passes on.
class NU_EXPORT CNuMemoryException : public CNuException {
 public:
  // An empty exception, and one with the name of the operation; its cause is 301.
  CNuMemoryException() : CNuException(0) {}
  explicit CNuMemoryException(const char* where);
  CNuMemoryException(const CNuMemoryException&) = default;
  CNuMemoryException& operator=(const CNuMemoryException&) = default;
  ~CNuMemoryException() override;

  int GetCause() const override;
};

#endif
