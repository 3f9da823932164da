package vendor.test.toy;

parcelable Item {
    int id;
    String label;
    long value;
}
