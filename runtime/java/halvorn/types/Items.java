package halvorn.types;

import java.util.function.Consumer;
import java.util.function.Supplier;

/**
 * A run of objects that lies somewhere else: what {@link Vector} is to words, this is to texts, floats,
 * records, data and functions.
 */
public abstract class Items<T> {

    /** The item of a number, from 0 on. */
    public abstract T get(int index);

    /** Sets an item, and gives the value. */
    public abstract T set(int index, T value);

    /** How many items there are. */
    public abstract int length();

    /** The items from one on. */
    public Items<T> from(int first) {
        Vector.check(first, length());
        return first == 0 ? this : new Rest<>(this, first);
    }

    /** The items of an array, from one on. */
    public static <T> Items<T> of(T[] items, int first) {
        return new Objects<>(items).from(first, items.length);
    }

    /** The floats of an array, from one on. */
    public static Items<Float> of(float[] items, int first) {
        return new Floats(items).from(first, items.length);
    }

    /** One item that is read and written by functions. */
    public static <T> Items<T> of(Supplier<T> get, Consumer<T> set) {
        return new Single<>(get, set);
    }

    /** A value that has no place of its own. */
    public static <T> Items<T> ofOne(T value) {
        return new Kept<>(value);
    }

    /** An array without items has no first one, and is whole all the same. */
    Items<T> from(int first, int count) {
        return first == 0 && count == 0 ? this : from(first);
    }

    private static final class Objects<T> extends Items<T> {
        private final T[] items;

        Objects(T[] items) {
            this.items = items;
        }

        @Override
        public T get(int index) {
            return items[index];
        }

        @Override
        public T set(int index, T value) {
            return items[index] = value;
        }

        @Override
        public int length() {
            return items.length;
        }
    }

    private static final class Floats extends Items<Float> {
        private final float[] items;

        Floats(float[] items) {
            this.items = items;
        }

        @Override
        public Float get(int index) {
            return items[index];
        }

        @Override
        public Float set(int index, Float value) {
            items[index] = value;
            return value;
        }

        @Override
        public int length() {
            return items.length;
        }
    }

    private static final class Single<T> extends Items<T> {
        private final Supplier<T> get;
        private final Consumer<T> set;

        Single(Supplier<T> get, Consumer<T> set) {
            this.get = get;
            this.set = set;
        }

        @Override
        public T get(int index) {
            Vector.check(index, 1);
            return get.get();
        }

        @Override
        public T set(int index, T value) {
            Vector.check(index, 1);
            set.accept(value);
            return value;
        }

        @Override
        public int length() {
            return 1;
        }
    }

    private static final class Kept<T> extends Items<T> {
        private T item;

        Kept(T item) {
            this.item = item;
        }

        @Override
        public T get(int index) {
            Vector.check(index, 1);
            return item;
        }

        @Override
        public T set(int index, T value) {
            Vector.check(index, 1);
            item = value;
            return value;
        }

        @Override
        public int length() {
            return 1;
        }
    }

    private static final class Rest<T> extends Items<T> {
        private final Items<T> whole;
        private final int first;

        Rest(Items<T> whole, int first) {
            this.whole = whole;
            this.first = first;
        }

        @Override
        public T get(int index) {
            Vector.check(index, length());
            return whole.get(first + index);
        }

        @Override
        public T set(int index, T value) {
            Vector.check(index, length());
            return whole.set(first + index, value);
        }

        @Override
        public int length() {
            return whole.length() - first;
        }

        @Override
        public Items<T> from(int next) {
            Vector.check(next, length());
            return next == 0 ? this : new Rest<>(whole, first + next);
        }
    }
}
