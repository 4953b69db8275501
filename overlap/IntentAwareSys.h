// The two interfaces that the overlap library offers, known by the order of their virtual
// functions only. The order is the contract: never insert, remove or reorder a line. Slots
// count from 1 over the function pointers of the virtual table.

#pragma once

#include <cstdint>
#include <string>

// The service that learns about snapshots and holds the values of named switches. Borrowed
// from the overlap library.
//
// Called from any thread. queryValue is called by several threads at once, also while a report is
// being sent. Asking locks nothing; queryValue may call this library, whose commands and switched
// operations ask it again. A report that a flush sends comes
// with a manager's queue locked: until finishReport has returned, the service must neither call an
// operation on records nor wait for a thread that does. Reports that are requested directly come
// with nothing locked, several at once. What the service throws reaches the library's caller.
// No virtual destructor: it would take two slots, and the object is never ours to delete.
class IntentAwareSys {
  public:
    /*  1 */ virtual void reserved01() = 0;
    /*  2 */ virtual void reserved02() = 0;
    /*  3 */ virtual void reserved03() = 0;
    /*  4 */ virtual void reserved04() = 0;
    /*  5 */ virtual void reserved05() = 0;
    /*  6 */ virtual void reserved06() = 0;
    /*  7 */ virtual void reserved07() = 0;
    /*  8 */ virtual void reserved08() = 0;
    /*  9 */ virtual void reserved09() = 0;
    /* 10 */ virtual void reserved10() = 0;
    /* 11 */ virtual void reserved11() = 0;
    /* 12 */ virtual void reserved12() = 0;
    /* 13 */ virtual void reserved13() = 0;
    /* 14 */ virtual void reserved14() = 0;
    /* 15 */ virtual void reserved15() = 0;
    /* 16 */ virtual void reserved16() = 0;
    /* 17 */ virtual void reserved17() = 0;
    /* 18 */ virtual void reserved18() = 0;
    /* 19 */ virtual void reserved19() = 0;
    /* 20 */ virtual void reserved20() = 0;
    // One parameter of the report on snapshot `id`. The texts are the caller's and are valid
    // only during the call; the same holds for reportEvent.
    /* 21 */ virtual void setParam(const std::string& id, const std::string& key,
                                   const std::string& value) = 0;
    /* 22 */ virtual void reserved22() = 0;
    // One event, a JSON object, of the report on snapshot `id`.
    /* 23 */ virtual void reportEvent(const std::string& id, const std::string& event) = 0;
    // Closes the report on snapshot `id`. The integers' meaning is the service's own.
    /* 24 */ virtual void finishReport(std::string id, int32_t first, int32_t second) = 0;
    // The value of the switch named `key`. By value: the service may write to its copy.
    /* 25 */ virtual std::string queryValue(std::string key) = 0;

  protected:
    ~IntentAwareSys() = default;
};

// What the overlap library's entry point returns. Borrowed as well.
class OverlapInstance {
  public:
    /* 1 */ virtual void reserved1() = 0;
    /* 2 */ virtual void reserved2() = 0;
    // Called once, right after the instance was obtained.
    /* 3 */ virtual void start() = 0;
    /* 4 */ virtual void reserved4() = 0;
    // The object known under `name`, as the address of its IntentAwareSys, or null.
    /* 5 */ virtual void* getObject(const char* name, int option) = 0;

  protected:
    ~OverlapInstance() = default;
};
