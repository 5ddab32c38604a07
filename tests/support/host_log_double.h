// SPDX-License-Identifier: Apache-2.0

// Plays a host log: an object as the host lays it out, whose log routine records how it was called.
#pragma once

#include <string>

class HostLogDouble {
  public:
    HostLogDouble();
    ~HostLogDouble();
    HostLogDouble(const HostLogDouble&) = delete;
    HostLogDouble& operator=(const HostLogDouble&) = delete;

    /// Returns the value of the attribute with which the host passes its log: the 8 bytes of the handle.
    [[nodiscard]] std::string HandleBytes() const;
    /// These remove the function table from the object, and the log routine from the table.
    void DropTable() { object_.table = nullptr; }
    void DropRoutine() { table_[39] = nullptr; }

    int answer = 0;  ///< what the log routine returns; 0 accepts

    int calls = 0;
    const void* handle = nullptr;
    int numbers[3] = {0, 0, 0};  ///< the fixed arguments
    int firstCount = 0;          ///< the variable arguments from here on
    int firstByte = -1;          ///< of the five-byte buffer
    int secondCount = 0;
    std::string report;
    bool endedByNull = false;

  private:
    struct Object {
        char own[16];
        void** table;
    };
    void* table_[40] = {};
    Object object_{};
};
