package halvorn.types;

/** A conversion between quantities. A program sets its attributes; "cvt" goes by them. */
public class Converter extends Data {

    public Converter() {
        super("CONVERTER", "");
    }
}
