package vendor.test.toy;

import vendor.test.toy.Item;

parcelable Record {
    int status;
    Item[] items;
    String name;
    byte small;
    float ratio;
    double precise;
    boolean flag;
    char letter;
    long[] longs;
    String[] names;
    @nullable String note;
}
