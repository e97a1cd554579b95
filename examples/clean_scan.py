# A scanned page becomes a page of black and white without specks.
import ombrilo

image = ombrilo.Image.open("scan.png")
image.truecolor().gray().enhancepage("median", "3x3").binary()
image.save("clean.tif")
