# Reports from the queue's own record.
s/const RequestRecord record = /const RequestRecord\& record = /
