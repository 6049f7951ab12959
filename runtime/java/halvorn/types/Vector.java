package halvorn.types;

import java.util.function.IntConsumer;
import java.util.function.IntSupplier;

/**
 * A run of words that lies somewhere else: an array or the rest of one, or a single variable. What is
 * set here is set there. A module passes such an object for every argument by reference that holds
 * numbers, and for arrays; a subscript beyond the run ends it with an IndexOutOfBoundsException.
 */
public abstract class Vector {

    /** The item of a number, from 0 on; the items of an array of CHAR are 0 to 255. */
    public abstract int get(int index);

    /** Sets an item, and gives the value; an item that is smaller than a word keeps its low bits. */
    public abstract int set(int index, int value);

    /** How many items there are. */
    public abstract int length();

    /** The items from one on. */
    public Vector from(int first) {
        check(first, length());
        return first == 0 ? this : new Rest(this, first);
    }

    /** The items as characters, up to the first 0. */
    public String text() {
        StringBuilder text = new StringBuilder();
        for (int i = 0; i < length() && get(i) != 0; i++) text.append((char) get(i));
        return text.toString();
    }

    /** Tells whether the items are characters. */
    public boolean isText() {
        return false;
    }

    /** The text of characters; other words in brackets. */
    @Override
    public String toString() {
        if (isText()) return text();
        StringBuilder text = new StringBuilder("[");
        for (int i = 0; i < length(); i++) text.append(i == 0 ? "" : ", ").append(get(i));
        return text.append("]").toString();
    }

    /** The words of an array, from one on. */
    public static Vector of(int[] items, int first) {
        return new Words(items).from(first, items.length);
    }

    /** The characters of an array, from one on. */
    public static Vector of(char[] items, int first) {
        return new Characters(items).from(first, items.length);
    }

    /** The short words of an array, from one on. */
    public static Vector of(short[] items, int first) {
        return new Shorts(items).from(first, items.length);
    }

    /** One item that is read and written by functions. */
    public static Vector of(IntSupplier get, IntConsumer set) {
        return new Single(get, set);
    }

    /** An array without items has no first one, and is whole all the same. */
    Vector from(int first, int count) {
        return first == 0 && count == 0 ? this : from(first);
    }

    static void check(int index, int length) {
        if (index < 0 || index >= length) throw new IndexOutOfBoundsException(index);
    }

    private static final class Words extends Vector {
        private final int[] items;

        Words(int[] items) {
            this.items = items;
        }

        @Override
        public int get(int index) {
            return items[index];
        }

        @Override
        public int set(int index, int value) {
            return items[index] = value;
        }

        @Override
        public int length() {
            return items.length;
        }
    }

    private static final class Characters extends Vector {
        private final char[] items;

        Characters(char[] items) {
            this.items = items;
        }

        @Override
        public boolean isText() {
            return true;
        }

        @Override
        public int get(int index) {
            return items[index];
        }

        @Override
        public int set(int index, int value) {
            items[index] = (char) (value & 255);
            return value;
        }

        @Override
        public int length() {
            return items.length;
        }
    }

    private static final class Shorts extends Vector {
        private final short[] items;

        Shorts(short[] items) {
            this.items = items;
        }

        @Override
        public int get(int index) {
            return items[index];
        }

        @Override
        public int set(int index, int value) {
            items[index] = (short) value;
            return value;
        }

        @Override
        public int length() {
            return items.length;
        }
    }

    private static final class Single extends Vector {
        private final IntSupplier get;
        private final IntConsumer set;

        Single(IntSupplier get, IntConsumer set) {
            this.get = get;
            this.set = set;
        }

        @Override
        public int get(int index) {
            check(index, 1);
            return get.getAsInt();
        }

        @Override
        public int set(int index, int value) {
            check(index, 1);
            set.accept(value);
            return value;
        }

        @Override
        public int length() {
            return 1;
        }
    }

    private static final class Rest extends Vector {
        private final Vector whole;
        private final int first;

        Rest(Vector whole, int first) {
            this.whole = whole;
            this.first = first;
        }

        @Override
        public boolean isText() {
            return whole.isText();
        }

        @Override
        public int get(int index) {
            check(index, length());
            return whole.get(first + index);
        }

        @Override
        public int set(int index, int value) {
            check(index, length());
            return whole.set(first + index, value);
        }

        @Override
        public int length() {
            return whole.length() - first;
        }

        @Override
        public Vector from(int next) {
            check(next, length());
            return next == 0 ? this : new Rest(whole, first + next);
        }
    }
}
