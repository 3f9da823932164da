/*
 * C++ base classes for binder interfaces: shared ownership through SharedRefBase, the common
 * interface base ICInterface, and the local (Bn) and proxy (Bp) halves.
 */
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>

#include <memory>
#include <mutex>
#include <utility>

namespace ndk {

// Base for objects that are always owned by std::shared_ptr. The first ref() creates the owning
// pointer from this; later calls share it for as long as any owner is alive.
class SharedRefBase {
  public:
    SharedRefBase() {}
    virtual ~SharedRefBase() {}
    SharedRefBase(const SharedRefBase&) = delete;
    SharedRefBase& operator=(const SharedRefBase&) = delete;

    template <typename T = SharedRefBase>
    std::shared_ptr<T> ref() {
        std::lock_guard<std::mutex> lock(mRefMutex);
        std::shared_ptr<SharedRefBase> thiz = mThis.lock();
        if (thiz == nullptr && !mRefCreated) {
            mRefCreated = true;
            thiz = std::shared_ptr<SharedRefBase>(this);
            mThis = thiz;
        }
        return std::static_pointer_cast<T>(thiz);
    }

    template <typename T = SharedRefBase>
    std::shared_ptr<const T> ref() const {
        return const_cast<SharedRefBase*>(this)->ref<T>();
    }

    template <class C, typename... Args>
    static std::shared_ptr<C> make(Args&&... args) {
        C* object = new C(std::forward<Args>(args)...);
        return object->template ref<C>();
    }

  private:
    std::mutex mRefMutex;
    bool mRefCreated = false;
    std::weak_ptr<SharedRefBase> mThis;
};

// Common base of every generated interface.
class ICInterface : public SharedRefBase {
  public:
    ICInterface() {}
    virtual ~ICInterface() {}

    virtual SpAIBinder asBinder() = 0;
    virtual bool isRemote() = 0;
    // Writes diagnostics for the local object; reached through AIBinder_dump.
    virtual binder_status_t dump(int /*fd*/, const char** /*args*/, uint32_t /*numArgs*/) {
        return STATUS_OK;
    }

    // Defines the binder class used for local objects of an interface.
    static AIBinder_Class* defineClass(const char* interfaceDescriptor,
                                       AIBinder_Class_onTransact onTransact);
    // The local object behind binder, or null for remote binders and other classes.
    static std::shared_ptr<ICInterface> asInterface(AIBinder* binder);

  private:
    // User data of local binders: keeps the object alive while its binder lives.
    struct ICInterfaceData {
        std::shared_ptr<ICInterface> interface;

        static std::shared_ptr<ICInterface> getInterface(AIBinder* binder);
        static void* onCreate(void* args);
        static void onDestroy(void* userData);
        static binder_status_t onDump(AIBinder* binder, int fd, const char** args, uint32_t numArgs);
    };
};

// Local implementation side of an interface.
template <typename INTERFACE>
class BnCInterface : public INTERFACE {
  public:
    BnCInterface() {}
    virtual ~BnCInterface() {}

    SpAIBinder asBinder() override;
    bool isRemote() override { return false; }

  protected:
    // Creates the binder for this object; called at most once per binder lifetime.
    virtual SpAIBinder createBinder() = 0;

  private:
    std::mutex mMutex;
    ScopedAIBinder_Weak mWeakBinder;
};

// Proxy side of an interface: forwards every call through its binder.
template <typename INTERFACE>
class BpCInterface : public INTERFACE {
  public:
    explicit BpCInterface(const SpAIBinder& binder) : mBinder(binder) {}
    virtual ~BpCInterface() {}

    SpAIBinder asBinder() override { return mBinder; }
    bool isRemote() override { return AIBinder_isRemote(mBinder.get()); }
    binder_status_t dump(int fd, const char** args, uint32_t numArgs) override {
        return AIBinder_dump(asBinder().get(), fd, args, numArgs);
    }

  private:
    SpAIBinder mBinder;
};

inline AIBinder_Class* ICInterface::defineClass(const char* interfaceDescriptor,
                                                AIBinder_Class_onTransact onTransact) {
    AIBinder_Class* clazz = AIBinder_Class_define(interfaceDescriptor, ICInterfaceData::onCreate,
                                                  ICInterfaceData::onDestroy, onTransact);
    if (clazz == nullptr) return nullptr;
    AIBinder_Class_setOnDump(clazz, ICInterfaceData::onDump);
    return clazz;
}

inline std::shared_ptr<ICInterface> ICInterface::asInterface(AIBinder* binder) {
    return ICInterfaceData::getInterface(binder);
}

inline std::shared_ptr<ICInterface> ICInterface::ICInterfaceData::getInterface(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    void* userData = AIBinder_getUserData(binder);
    if (userData == nullptr) return nullptr;
    return static_cast<ICInterfaceData*>(userData)->interface;
}

inline void* ICInterface::ICInterfaceData::onCreate(void* args) {
    std::shared_ptr<ICInterface> interface = static_cast<ICInterface*>(args)->ref<ICInterface>();
    return new ICInterfaceData{std::move(interface)};
}

inline void ICInterface::ICInterfaceData::onDestroy(void* userData) {
    delete static_cast<ICInterfaceData*>(userData);
}

inline binder_status_t ICInterface::ICInterfaceData::onDump(AIBinder* binder, int fd,
                                                            const char** args, uint32_t numArgs) {
    std::shared_ptr<ICInterface> interface = getInterface(binder);
    if (interface == nullptr) return STATUS_UNEXPECTED_NULL;
    return interface->dump(fd, args, numArgs);
}

template <typename INTERFACE>
SpAIBinder BnCInterface<INTERFACE>::asBinder() {
    std::lock_guard<std::mutex> lock(mMutex);
    SpAIBinder binder;
    if (mWeakBinder.get() != nullptr) binder = mWeakBinder.promote();
    if (binder.get() == nullptr) {
        binder = createBinder();
        mWeakBinder.set(AIBinder_Weak_new(binder.get()));
    }
    return binder;
}

}  // namespace ndk
