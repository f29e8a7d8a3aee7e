#pragma once

/// While it lives, every file that SQLite opens in this process goes through it, and writing to the disk fails when the
/// test says so. One at a time; databases are closed before it.
class FailingDisk {
public:
    FailingDisk();
    ~FailingDisk();
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    /// The n-th write, truncation or synchronisation from now on fails, and no other; 0: none.
    void FailAt(int number);
    /// Whether it has.
    bool Failed() const;
};
