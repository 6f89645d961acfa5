#pragma once

#include <map>
#include <string>

// Only in programs that have allocation_count.cpp among their sources: it replaces the global operator new.
namespace velicor::test {

// From now on allocations by operator new are counted, by thread.
void startCounting();

// Ends the counting. By name of the thread, of those that still run; 0 where it allocated nothing.
std::map<std::string, int> stopCounting();

}  // namespace velicor::test
