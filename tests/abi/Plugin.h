// What the plug-in offers to programs that load it.

#pragma once

// The address of the manager that the plug-in works on.
using ManagerOfPlugin = void*();
extern "C" ManagerOfPlugin managerOfPlugin;

// Reports one snapshot from registration to removal.
using ReportThroughPlugin = void(const char* imageName);
extern "C" ReportThroughPlugin reportThroughPlugin;
