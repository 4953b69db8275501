#pragma once

// What does not belong to a snapshot: a log statement, and handing a task to the worker pool.
void registerPlatform();
