#include "device/notifier.h"

void VUINotifer::Attach(IObserver* observer) {
    if (observer != nullptr) m_observers.push_back(observer);
}

void VUINotifer::AttachAll(std::span<IObserver* const> observers) {
    std::vector<IObserver*> attached = m_observers;
    for (IObserver* observer : observers) {
        if (observer != nullptr) attached.push_back(observer);
    }
    m_observers.swap(attached);
}

void VUINotifer::DetachAll() { m_observers.clear(); }

// Walks a copy: an observer may attach or detach while it is told.
void VUINotifer::Notify() {
    const std::vector<IObserver*> observers = m_observers;
    for (IObserver* observer : observers) observer->Update(this);
}
