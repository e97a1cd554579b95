# A photographed page: the shadow goes, the paper becomes white; then black and white for reading.
import ombrilo

page = ombrilo.Image.open("photographed.png").truecolor().gray().whiten()
page.save("even.png")
page.binary().save("readable.tif")
