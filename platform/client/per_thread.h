// An object of each thread's own, made on first use and destroyed with the thread.
//
// The language's thread-local objects would do, but for one thing: where there is no memory to remember their
// destructor, the C library ends the process. This one throws.
#ifndef ZYMDB_PLATFORM_CLIENT_PER_THREAD_H
#define ZYMDB_PLATFORM_CLIENT_PER_THREAD_H

#include <pthread.h>

#include <memory>
#include <new>

namespace zymdb::client {

template <class T>
class PerThread {
 public:
  // Null once the thread ends: destructors that run later may still call the client.
  static T* get() { return object_ != nullptr || ended_ ? object_ : make(); }

  // The same, but null for a thread that has not got one.
  static T* known() { return object_; }

 private:
  static T* make() {
    static const Key key;
    auto object = std::make_unique<T>();
    if (!key.exists || pthread_setspecific(key.key, object.get()) != 0) throw std::bad_alloc();
    return object_ = object.release();
  }

  static void destroy(void*) {
    ended_ = true;
    delete object_;
    object_ = nullptr;
  }

  struct Key {
    Key() : exists(pthread_key_create(&key, &destroy) == 0) {}
    // A process that exits has no more threads' ends: the exiting thread's own object goes here.
    ~Key() { destroy(nullptr); }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    pthread_key_t key{};
    bool exists;
  };

  static thread_local constinit inline T* object_ = nullptr;
  static thread_local constinit inline bool ended_ = false;
};

}  // namespace zymdb::client

#endif
