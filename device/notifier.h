// The subject/observer pair through which the device-model client hands its accessory record to
// the UI plug-in object, the Printing Shortcuts pages and the PrintTicket converters.
#pragma once

#include "device/bidi_data.h"

#include <span>
#include <vector>

class ISubject;

class IObserver {
public:
    // Called by a subject's Notify; the observer reads the subject's GetData.
    virtual void Update(ISubject* subject) = 0;

protected:
    ~IObserver() = default;
};

class ISubject {
public:
    virtual void Attach(IObserver* observer) = 0;
    virtual void DetachAll() = 0;
    virtual void Notify() = 0;
    // The subject's current record; valid as long as the subject lives.
    virtual IBiDiData* GetData() = 0;

protected:
    ~ISubject() = default;
};

class VUINotifer : public ISubject {
public:
    // Observers are not owned; a null one is ignored and a repeated one is notified again.
    void Attach(IObserver* observer) override;
    // Attaches each observer in order, or none of them when memory runs out.
    void AttachAll(std::span<IObserver* const> observers);
    void DetachAll() override;
    // Tells every observer, in attach order.
    void Notify() override;

    size_t ObserverCount() const noexcept { return m_observers.size(); }

protected:
    ~VUINotifer() = default;

private:
    std::vector<IObserver*> m_observers;
};
