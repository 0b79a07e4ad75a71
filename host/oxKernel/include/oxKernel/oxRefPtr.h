// Intrusive reference counting: oxRefPtrObject carries an atomic count and
// deletes itself when the last oxRefPtr lets go, on whichever thread that is.
#pragma once

#include <atomic>
#include <utility>

namespace OxKernel {

class oxRefPtrObject {
 public:
  oxRefPtrObject() = default;
  oxRefPtrObject(const oxRefPtrObject&) : m_refs(0) {}
  oxRefPtrObject& operator=(const oxRefPtrObject&) { return *this; }
  virtual ~oxRefPtrObject() = default;

  void AddRef() const { m_refs.fetch_add(1, std::memory_order_relaxed); }
  void Release() const {
    if (m_refs.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }
  int GetRefCount() const { return m_refs.load(std::memory_order_acquire); }
  // The host may defer deletions; this stand-in deletes at once, so there is
  // never anything to wait for.
  static void _WaitForDeletion(const oxRefPtrObject*) {}

 private:
  mutable std::atomic<int> m_refs{0};
};

template <class T>
class oxRefPtr {
 public:
  oxRefPtr() = default;
  oxRefPtr(T* p) : m_p(p) { Acquire(); }  // NOLINT: implicit like the host's
  oxRefPtr(const oxRefPtr& o) : m_p(o.m_p) { Acquire(); }
  oxRefPtr(oxRefPtr&& o) noexcept : m_p(std::exchange(o.m_p, nullptr)) {}
  template <class U>
  oxRefPtr(const oxRefPtr<U>& o) : m_p(o.Get()) {  // NOLINT
    Acquire();
  }
  ~oxRefPtr() { Drop(); }

  oxRefPtr& operator=(const oxRefPtr& o) { return *this = oxRefPtr(o); }
  oxRefPtr& operator=(oxRefPtr&& o) noexcept {
    if (this != &o) {
      Drop();
      m_p = std::exchange(o.m_p, nullptr);
    }
    return *this;
  }

  T* Get() const { return m_p; }
  T* operator->() const { return m_p; }
  T& operator*() const { return *m_p; }
  explicit operator bool() const { return m_p != nullptr; }
  void Reset() { Drop(); }

 private:
  void Acquire() {
    if (m_p) m_p->AddRef();
  }
  void Drop() {
    if (m_p) std::exchange(m_p, nullptr)->Release();
  }
  T* m_p = nullptr;
};

}  // namespace OxKernel
