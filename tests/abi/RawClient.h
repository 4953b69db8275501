// A synchronizer's calls, made through its virtual table alone.

#pragma once

void rawRequestInfo(void* object, const void* in);
void* rawRequestCmd(void* object, const void* in);
