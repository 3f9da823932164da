package vendor.test.toy;

import vendor.test.toy.Item;
import vendor.test.toy.Record;

interface IToy {
    Record makeRecord(int count, in String label);
    String echoString(in String value);
    int[] reverseInts(in int[] values);
    long addLong(long a, long b);
    boolean negate(boolean value);
    char nextChar(char value);
    void doNothing();
    int fail(int exceptionCode, int serviceError, in String message);
    int sleepMillis(int millis);
    int[] sleepStats();
    void wakeSleepers();
    int[] callerIdentity();
}
