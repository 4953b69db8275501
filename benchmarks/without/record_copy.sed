# Reports from the queue's own record.
s/const RecordCopy record\(/const RequestRecord\& record(/
s/const RecordCopy\& /const RequestRecord\& /
